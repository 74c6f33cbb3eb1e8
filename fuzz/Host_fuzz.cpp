// The commands that show a whole data set (describe, tree, report) on exchange files that are
// nearly valid: whatever the files contain, the commands end and print nothing that controls a
// terminal; each line of JSON is valid.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Input.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/Printable.h"

namespace {

constexpr std::size_t kMostLines = 200;

// A file in memory, with a name under which it can be opened.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("input", 0)) {
        Require(write(descriptor_, content.data(), content.size()) ==
                    static_cast<ssize_t>(content.size()),
                "there is memory for the input");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string Name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    const int descriptor_;
};

// Captures the standard streams while it exists.
class Captured {
  public:
    Captured() : out_(std::cout.rdbuf(output.rdbuf())), err_(std::cerr.rdbuf(errors.rdbuf())) {}
    ~Captured() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(err_);
    }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    std::ostringstream output;
    std::ostringstream errors;

  private:
    std::streambuf* const out_;
    std::streambuf* const err_;
};

void RequireHarmless(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Require(host::Printable(line) == line, "a terminal acts on nothing", line);
    }
}

void RunCommand(int (*command)(const host::Options&), host::Options options) {
    std::string output;
    std::string errors;
    {
        Captured captured;
        try {
            command(options);
        } catch (const host::Unusable&) {
        }
        output = captured.output.str();
        errors = captured.errors.str();
    }
    RequireHarmless(output);
    RequireHarmless(errors);
    if (!options.json) return;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        Require(nlohmann::json::accept(line), "a line of JSON is JSON", line);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TheModule();  // stays loaded: the fuzzer keeps reading its counters
    const MemoryFile file(AsText(data, size));
    host::Options options;
    options.models.push_back({false, "m=" + file.Name()});
    options.lenient = size % 2 == 0;
    options.lines = kMostLines;
    options.output = "-";
    for (const bool json : {false, true}) {
        options.json = json;
        options.placements = json;
        RunCommand(host::Describe, options);
        RunCommand(host::Tree, options);
    }
    options.json = false;
    RunCommand(host::Report, options);
    return 0;
}

// Half the time, replaces a value of a record with one of another kind: the file can still be read,
// but violates the schema.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    static constexpr std::string_view kValues[] = {"$",
                                                   "*",
                                                   "'x'",
                                                   "''",
                                                   "7",
                                                   "-1",
                                                   "1.5",
                                                   "1.E999",
                                                   ".T.",
                                                   ".U.",
                                                   ".X.",
                                                   "\"0F\"",
                                                   "()",
                                                   "(1.,2.)",
                                                   "(#1,$,'x')",
                                                   "#1",
                                                   "#7",
                                                   "#8",
                                                   "#11",
                                                   "#999",
                                                   "A(1)",
                                                   "((()))",
                                                   "'\\X\\1B'",
                                                   "'00000000000000'",
                                                   "'03072001080512.5'",
                                                   "9223372036854775807"};
    const std::string_view text = AsText(data, size);
    if (seed % 2 == 0 || text.find_first_of("(,") == std::string_view::npos) {
        return LLVMFuzzerMutate(data, size, most);
    }
    seed /= 2;
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(' || text[i] == ',') starts.push_back(i + 1);
    }
    const std::size_t start = starts[seed % starts.size()];
    const std::size_t end = std::min(text.find_first_of(",)", start), text.size());
    const std::string_view value = kValues[seed / starts.size() % std::size(kValues)];
    const std::string mutated =
        std::string(text.substr(0, start)).append(value).append(text.substr(end));
    if (mutated.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::memcpy(data, mutated.data(), mutated.size());
    return mutated.size();
}
