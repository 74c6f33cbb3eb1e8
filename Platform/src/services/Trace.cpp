// The trace service.

#include "KORPSNTrace.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <climits>
#include <ios>
#include <locale>
#include <mutex>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "KORSystem.h"
#include "services/TraceFile.h"

// Functions may trace while the process or a thread ends. The state of the service therefore needs
// no construction and is never destroyed; its resources are released when the library is unloaded,
// and acquired again if another line follows.

namespace {

// Line breaks inside a line, which come from data, are written as "\n" and "\r", so that a value
// cannot fake lines. The only line break is the one added here at the end.
std::string OneLine(std::string_view text) {
    if (text.ends_with('\n')) text.remove_suffix(1);
    std::string line;
    line.reserve(text.size() + 1);
    for (const char c : text) {
        switch (c) {
            case '\n': line += "\\n"; break;
            case '\r': line += "\\r"; break;
            default: line += c;
        }
    }
    return line += '\n';
}

// The sink that receives the lines instead.
constinit std::atomic<KORPSNSink*> redirected{nullptr};

// The destination of finished lines.
constinit kor::TraceFile sink;

void WriteLine(std::string_view line) {
    // A sink that takes lines may wait for locks of its own.
    if (KORPSNSink* other = redirected.load(std::memory_order_acquire)) {
        other->Write(line);
    } else {
        sink.Write(line);
    }
}

// Reads a whole number, with an optional sign and blanks around it. A number out of range becomes
// the nearest int.
std::optional<int> LevelIn(std::string_view text) {
    constexpr std::string_view kBlank = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(kBlank), text.size()));
    text = text.substr(0, text.find_last_not_of(kBlank) + 1);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    int level = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (end != text.data() + text.size()) return std::nullopt;
    if (error == std::errc::result_out_of_range) return text.front() == '-' ? INT_MIN : INT_MAX;
    return error == std::errc() ? std::optional(level) : std::nullopt;
}

// The level set by KOR_TRACE. An empty value sets none.
int LevelOfEnvironment() {
    const char* text = KORGetEnv("KOR_TRACE");
    if (text == nullptr || *text == '\0') return 0;
    const std::optional<int> level = LevelIn(text);
    if (level.has_value()) return *level;
    kor::TraceFile().Write(OneLine(std::string("KOR_TRACE=") + text +
                                   ": a trace level is a whole number; the trace is off"));
    return 0;
}

// The number of open scopes of this thread that wrote their first line. A thread has it from its
// start: memory taken for it later could run out, which would end the process.
[[gnu::tls_model("initial-exec")]] thread_local int depth = 0;

constexpr int kWidestIndent = 1000;
constexpr auto kBlanks = [] {
    std::array<char, kWidestIndent + 1> blanks{};
    blanks.fill(' ');
    blanks.back() = '\0';
    return blanks;
}();

// Collects the bytes that are written.
class LineBuffer final : public std::streambuf {
  public:
    std::string text;

  private:
    int_type overflow(int_type c) override {
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            text.push_back(traits_type::to_char_type(c));
        }
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        text.append(characters, static_cast<std::size_t>(count));
        return count;
    }
};

}  // namespace

// The line of a scope. Unused lines are kept for the next scopes.
struct KORPSNTrace::Line {
    Line() : stream(&buffer) { stream.imbue(std::locale::classic()); }

    // Empties the line and resets its formatting.
    void Clear() {
        buffer.text.clear();
        stream.clear();
        stream.flags(std::ios_base::skipws | std::ios_base::dec);
        stream.precision(6);
        stream.width(0);
        stream.fill(' ');
    }

    LineBuffer buffer;
    std::ostream stream;
    Line* next = nullptr;
};

class KORPSNTrace::Lines {
  public:
    static Line* Take() {
        {
            const std::lock_guard lock(mutex_);
            if (Line* line = free_) {
                free_ = line->next;
                return line;
            }
        }
        return new Line;
    }

    static void GiveBack(Line* line) {
        constexpr std::size_t kLong = std::size_t{1} << 16;
        if (line->buffer.text.capacity() > kLong) {
            delete line;
            return;
        }
        const std::lock_guard lock(mutex_);
        line->next = free_;
        free_ = line;
    }

    static void Free() {
        const std::lock_guard lock(mutex_);
        while (Line* line = free_) {
            free_ = line->next;
            delete line;
        }
    }

  private:
    static constinit std::mutex mutex_;
    static constinit Line* free_;
};

constinit std::mutex KORPSNTrace::Lines::mutex_;
constinit KORPSNTrace::Line* KORPSNTrace::Lines::free_ = nullptr;

constinit std::atomic<int> KORPSNTrace::activeLevel_{0};

// Constructed and destroyed when the library is loaded and unloaded.
struct KORPSNTrace::Service {
    Service() {
        sink.Append(KORGetEnv("KOR_TRACE_FILE"));
        activeLevel_.store(LevelOfEnvironment(), std::memory_order_relaxed);
    }
    ~Service() {
        sink.Close();
        Lines::Free();
    }

    // Makes the standard streams ready: the constructor may write to one.
    const std::ios_base::Init streams;

    static const Service service;
};
const KORPSNTrace::Service KORPSNTrace::Service::service;

int KORPSNTrace::GetIndent() { return 3 * std::max(depth - 1, 0); }

KORString KORPSNTrace::Indent(int count) {
    return KORString(kBlanks.data() + kWidestIndent - std::clamp(count, 0, kWidestIndent));
}

KORPSNTrace::Target KORPSNTrace::Redirect(Target target) {
    KORPSNSink* const before = redirected.exchange(target.sink, std::memory_order_acq_rel);
    return {activeLevel_.exchange(target.level, std::memory_order_relaxed), before};
}

void KORPSNTrace::Open() noexcept {
    state_ = State::Open;
    ++depth;
    WriteMark(" {\n");
}

void KORPSNTrace::Close() noexcept {
    if (state_ == State::Open) {
        // The trace may have been switched off in the meantime.
        if (LevelIsActive(level_) != 0) WriteMark(" }\n");
        --depth;
    }
    if (line_ != nullptr) Lines::GiveBack(line_);
}

// Writes the line that opens or closes the scope. A line that cannot be written is lost; the trace
// never makes a call fail.
void KORPSNTrace::WriteMark(const char* mark) noexcept {
    try {
        GetLigne().GetStream() << Indent(GetIndent()) << label_ << mark;
        Out();
    } catch (...) {
    }
}

KORPSNLigne KORPSNTrace::GetLigne() {
    if (line_ == nullptr) {
        line_ = Lines::Take();
        if (state_ == State::Closed) state_ = State::Lent;
    }
    line_->Clear();
    return KORPSNLigne(line_->stream);
}

void KORPSNTrace::Out() {
    if (line_ == nullptr) return;
    // If the stream ran out of memory, it contains half a line.
    if (line_->stream.good() && !line_->buffer.text.empty()) {
        WriteLine(OneLine(line_->buffer.text));
    }
    line_->Clear();
}

void KORPSNTrace::Pass(std::string_view line) { sink.Write(OneLine(line)); }

bool KORPSNTrace::Configure(int level, const char* file) {
    const bool opened = sink.StartAnew(file);
    activeLevel_.store(opened ? level : 0, std::memory_order_relaxed);
    return opened;
}

// ---- KORPSNCapture

KORPSNCapture::KORPSNCapture(Take take, int level)
    : take_(std::move(take)), before_(KORPSNTrace::Redirect({level, this})) {}

KORPSNCapture::~KORPSNCapture() { KORPSNTrace::Redirect(before_); }

void KORPSNCapture::Write(std::string_view line) noexcept {
    try {
        take_(line);
    } catch (...) {
    }
}
