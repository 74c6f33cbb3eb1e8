// Time and memory in proportion to the input: a piece of text that is repeated four times as often
// takes about four times as much to read.
//
// The first character of an input chooses what the pieces are part of, the rest is the piece. In a
// piece, % is the number of the repetition, ^ that of the previous one and ~ that of the next.

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <string>

#include "Input.h"
#include "script/Script.h"

namespace {

// As many as there may be levels of subtypes: up to there a chain of them takes more than in
// proportion.
constexpr int kFew = 1000;
constexpr int kMany = 4 * kFew;
constexpr double kMostGrowth = 3.0 * kMany / kFew;
// What a measurement says nothing about.
constexpr double kNoise = 0.05;  // seconds
constexpr double kFewBytes = 1 << 20;
constexpr std::size_t kLongestPiece = 64;

// What is read stays until it has been measured.
using Read = std::shared_ptr<void>;

Read ReadData(std::string_view text) {
    struct Result {
        exchange::Messages messages;
        exchange::DataSet dataSet;
    };
    static const exchange::SchemaCatalog schemas;
    exchange::ReadOptions options;
    options.lenient = true;
    options.threads = 1;
    auto result = std::make_shared<Result>();
    result->dataSet = exchange::ParseDataSet(text, "input", schemas, options, result->messages);
    return result;
}

Read ReadSchemas(std::string_view text) {
    struct Result {
        exchange::Messages messages;
        std::vector<exchange::SchemaPtr> schemas;
    };
    auto result = std::make_shared<Result>();
    result->schemas = exchange::ParseSchemas(text, "input", result->messages);
    return result;
}

Read ReadScript(std::string_view text) {
    auto result = std::make_shared<std::vector<host::Statement>>();
    host::ScriptReader reader(text, host::kStartOfScript, {});
    for (int errors = 0; errors < kMany;) {
        try {
            std::optional<host::Statement> statement = reader.Next();
            if (!statement.has_value()) break;
            result->push_back(std::move(*statement));
        } catch (const host::ScriptError&) {
            ++errors;
        }
    }
    return result;
}

struct Language {
    std::string_view before;
    std::string_view after;
    Read (*read)(std::string_view);
};
constexpr Language kData{"ISO-10303-21;HEADER;FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));ENDSEC;DATA;\n",
                         "ENDSEC;END-ISO-10303-21;", ReadData};
constexpr Language kSchema{"SCHEMA s;\n", "END_SCHEMA;", ReadSchemas};
constexpr Language kScript{"", "", ReadScript};

// What the pieces are part of.
struct Frame {
    const Language& language;
    std::string_view before;
    std::string_view after;
};
constexpr std::array kFrames{
    Frame{kData, "", ""},                        // 0: instances
    Frame{kData, "#1=A(", "$);"},                // 1: values
    Frame{kData, "#1=(", "A());"},               // 2: parts of an instance
    Frame{kSchema, "", ""},                      // 3: declarations
    Frame{kSchema, "ENTITY e;", "END_ENTITY;"},  // 4: attributes
    Frame{kScript, "", ""},                      // 5: statements
    Frame{kScript, "LET a = (", "1)"},           // 6: members of a list
};

std::string Repeated(const Frame& frame, std::string_view piece, int count) {
    std::string text(frame.language.before);
    text += frame.before;
    for (int i = 1; i <= count; ++i) {
        for (const char c : piece) {
            switch (c) {
                case '%': text += std::to_string(i); break;
                case '^': text += std::to_string(i - 1); break;
                case '~': text += std::to_string(i + 1); break;
                default: text += c;
            }
        }
    }
    text += frame.after;
    text += frame.language.after;
    return text;
}

double ThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

struct Cost {
    double seconds;
    double bytes;
};

Cost CostOf(const Frame& frame, const std::string& text) {
    const std::size_t before = __sanitizer_get_current_allocated_bytes();
    const double start = ThreadSeconds();
    const Read kept = frame.language.read(text);
    const double seconds = ThreadSeconds() - start;
    const std::size_t after = __sanitizer_get_current_allocated_bytes();
    return {seconds, static_cast<double>(after) - static_cast<double>(before)};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Frame& frame = kFrames[static_cast<std::size_t>(data[0] - '0') % kFrames.size()];
    const std::string_view piece = AsText(data, size).substr(1, kLongestPiece);
    const std::string few = Repeated(frame, piece, kFew);
    const std::string many = Repeated(frame, piece, kMany);
    const Cost once = CostOf(frame, few);
    Cost cost = CostOf(frame, many);
    const double mostSeconds = kMostGrowth * once.seconds + kNoise;
    // Other work on the machine takes time now and then, but not always.
    for (int i = 0; i < 3 && cost.seconds > mostSeconds; ++i) cost = CostOf(frame, many);
    Require(cost.seconds <= mostSeconds, "time grows as the input does", piece);
    Require(cost.bytes <= kMostGrowth * std::max(once.bytes, 0.0) + kFewBytes,
            "memory grows as the input does", piece);
    return 0;
}
