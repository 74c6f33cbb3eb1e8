#include "KORPSNTrace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iostream>
#include <locale>
#include <mutex>
#include <new>
#include <sstream>
#include <string>
#include <string_view>

#include "KORSystem.h"

namespace {

// Where lines go instead.
constinit std::atomic<KORPSNSink*> redirected{nullptr};

// Where finished lines go.
class Sink {
  public:
    bool Open(const char* file) {
        const std::lock_guard lock(mutex_);
        file_.close();
        file_.clear();
        toFile_ = file != nullptr && *file != '\0';
        if (toFile_) file_.open(file, std::ios::binary | std::ios::trunc);
        return !toFile_ || file_.is_open();
    }

    void Write(std::string_view line) {
        // Without the lock: a sink may wait for locks of its own.
        if (KORPSNSink* other = redirected.load(std::memory_order_acquire)) {
            return other->Write(line);
        }
        const std::lock_guard lock(mutex_);
        std::ostream& stream = toFile_ ? static_cast<std::ostream&>(file_) : std::cerr;
        stream.write(line.data(), static_cast<std::streamsize>(line.size()));
        stream.flush();
        // What could not be written is lost; later lines may go through again.
        stream.clear();
    }

  private:
    std::mutex mutex_;
    bool toFile_ = false;
    std::ofstream file_;
};

Sink& TheSink() {
    static Sink sink;
    return sink;
}

// Reads KOR_TRACE and KOR_TRACE_FILE when the library is loaded.
const bool configuredFromEnvironment = [] {
    const char* level = KORGetEnv("KOR_TRACE");
    if (level == nullptr) return false;
    int number = 0;
    const std::string_view text(level);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    return KORPSNTrace::Configure(number, KORGetEnv("KOR_TRACE_FILE"));
}();

// The open scopes of this thread that wrote their first line, and the line being written.
thread_local int depth = 0;

std::ostringstream& Line() {
    thread_local std::ostringstream line = [] {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        return stream;
    }();
    return line;
}

constexpr int kWidestIndent = 1000;
constexpr auto kBlanks = [] {
    std::array<char, kWidestIndent + 1> blanks{};
    blanks.fill(' ');
    blanks.back() = '\0';
    return blanks;
}();

}  // namespace

constinit std::atomic<int> KORPSNTrace::activeLevel_{0};

int KORPSNTrace::GetIndent() { return 3 * std::max(depth - 1, 0); }

KORString KORPSNTrace::Indent(int count) {
    return KORString(kBlanks.data() + kWidestIndent - std::clamp(count, 0, kWidestIndent));
}

KORPSNTrace::Target KORPSNTrace::Redirect(Target target) {
    KORPSNSink* const sink = redirected.exchange(target.sink, std::memory_order_acq_rel);
    return {activeLevel_.exchange(target.level, std::memory_order_relaxed), sink};
}

void KORPSNTrace::Open() noexcept {
    open_ = true;
    ++depth;
    WriteMark(" {\n");
}

void KORPSNTrace::Close() noexcept {
    // The trace may have been switched off since.
    if (LevelIsActive(level_) != 0) WriteMark(" }\n");
    --depth;
}

// Writes the line that opens or closes the scope. A line that cannot be written is lost: the trace
// never fails a call.
void KORPSNTrace::WriteMark(const char* mark) noexcept {
    try {
        GetLigne().GetStream() << Indent(GetIndent()) << label_ << mark;
        Out();
    } catch (...) {
    }
}

KORPSNLigne KORPSNTrace::GetLigne() {
    std::ostringstream& line = Line();
    line.str({});
    line.clear();
    return KORPSNLigne(line);
}

void KORPSNTrace::Out() { TheSink().Write(Line().view()); }

bool KORPSNTrace::Configure(int level, const char* file) {
    const bool opened = TheSink().Open(file);
    activeLevel_.store(opened ? level : 0, std::memory_order_relaxed);
    return opened;
}
