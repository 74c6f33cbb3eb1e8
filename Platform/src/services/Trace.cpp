// The trace service.

#include "KORPSNTrace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>
#include <ctime>
#include <iostream>
#include <locale>
#include <mutex>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>

#include "KORSystem.h"
#include "services/Utf8.h"

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

// A line as it goes to a terminal, which shows UTF-8 and acts on control characters: these are
// written as exchange files write them, \X\1B for an escape.
std::string ForTerminal(std::string_view line) {
    std::string shown;
    if (line.ends_with('\n')) line.remove_suffix(1);
    for (const char c : line) {
        const char32_t character = kor::CodePoint(c);
        if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
            shown += "\\X\\";
            kor::AppendHex(shown, character, 2);
        } else {
            kor::AppendUtf8(shown, character);
        }
    }
    return shown += '\n';
}

void WriteToStandardError(std::string_view line) {
    const std::string shown = isatty(STDERR_FILENO) ? ForTerminal(line) : std::string(line);
    std::cerr.write(shown.data(), static_cast<std::streamsize>(shown.size()));
    std::cerr.flush();
    std::cerr.clear();
}

// Prevents SIGPIPE from a pipe without readers from ending the process.
class PipeSignalHeldBack {
  public:
    PipeSignalHeldBack() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        pending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~PipeSignalHeldBack() {
        const timespec now{};
        if (!pending_) sigtimedwait(&pipe_, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    PipeSignalHeldBack(const PipeSignalHeldBack&) = delete;
    PipeSignalHeldBack& operator=(const PipeSignalHeldBack&) = delete;

  private:
    sigset_t pipe_;
    sigset_t before_;
    bool pending_;
};

bool IsPipe(const char* file) {
    struct stat status {};
    return stat(file, &status) == 0 && S_ISFIFO(status.st_mode);
}

// The sink that receives the lines instead.
constinit std::atomic<KORPSNSink*> redirected{nullptr};

// The destination of finished lines.
class Sink {
  public:
    // Appends lines to the file, which is opened for the first one.
    void Append(const char* file) {
        const std::lock_guard lock(mutex_);
        Set(file);
    }

    // The same for a file that is truncated now. A pipe is opened later, since opening waits for
    // its reader.
    bool StartAnew(const char* file) {
        const std::lock_guard lock(mutex_);
        if (!Set(file)) return false;
        if (file_[0] == '\0') return true;
        if (IsPipe(file_)) return access(file_, W_OK) == 0;
        if (!Open()) {
            file_[0] = '\0';
            return false;
        }
        return !regular_ || shared_ || ftruncate(descriptor_, 0) == 0;
    }

    // A line that cannot be written is lost; later lines may succeed again.
    void Write(std::string_view line) {
        const std::lock_guard lock(mutex_);
        if (file_[0] == '\0') {
            WriteToStandardError(line);
        } else if (descriptor_ >= 0 || Open()) {
            std::string shown;
            if (terminal_) line = shown = ForTerminal(line);
            std::optional<PipeSignalHeldBack> heldBack;
            if (!regular_) heldBack.emplace();
            while (!line.empty()) {
                const ssize_t written = write(descriptor_, line.data(), line.size());
                if (written < 0 && errno != EINTR) break;
                if (written > 0) line.remove_prefix(static_cast<std::size_t>(written));
            }
        }
    }

    void Close() {
        const std::lock_guard lock(mutex_);
        CloseFile();
    }

  private:
    void CloseFile() {
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ = -1;
    }

    // Makes the path absolute now, since the working directory may differ when it is opened.
    bool Set(const char* file) {
        CloseFile();
        file_[0] = '\0';
        if (file == nullptr || *file == '\0') return true;
        std::size_t size = 0;
        if (*file != '/' && getcwd(file_, sizeof file_ - 1) != nullptr) {
            size = std::strlen(file_);
            file_[size++] = '/';
        }
        const std::size_t length = std::strlen(file);
        if (size + length >= sizeof file_) {
            file_[0] = '\0';
            return false;
        }
        std::memcpy(file_ + size, file, length + 1);
        return true;
    }

    bool Open() {
        constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY;
        do {
            descriptor_ = open(file_, kFlags, 0666);
        } while (descriptor_ < 0 && errno == EINTR);
        struct stat status {};
        if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) return false;
        regular_ = S_ISREG(status.st_mode);
        terminal_ = isatty(descriptor_) == 1;
        // If a standard stream writes to this file, it has its own position in it and would
        // overwrite the lines, so they go through that stream's descriptor.
        shared_ = ShareWith(STDOUT_FILENO, status) || ShareWith(STDERR_FILENO, status);
        return true;
    }

    bool ShareWith(int standard, const struct stat& status) {
        struct stat other {};
        if (fstat(standard, &other) != 0 || other.st_dev != status.st_dev ||
            other.st_ino != status.st_ino || (fcntl(standard, F_GETFL) & O_ACCMODE) == O_RDONLY) {
            return false;
        }
        const int shared = fcntl(standard, F_DUPFD_CLOEXEC, 0);
        if (shared < 0) return false;
        close(descriptor_);
        descriptor_ = shared;
        return true;
    }

    std::mutex mutex_;
    int descriptor_ = -1;   // not open yet
    bool regular_ = false;  // a file, not a pipe or device
    bool terminal_ = false;
    bool shared_ = false;       // with a standard stream
    char file_[PATH_MAX] = {};  // "": the standard error stream
};
static_assert(std::is_trivially_destructible_v<Sink>);

constinit Sink sink;

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
    WriteToStandardError(OneLine(std::string("KOR_TRACE=") + text +
                                 ": a trace level is a whole number; the trace is off"));
    return 0;
}

// The number of open scopes of this thread that wrote their first line.
thread_local int depth = 0;

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
