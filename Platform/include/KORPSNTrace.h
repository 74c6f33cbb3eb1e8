// The trace service. A function opens a scope by creating a KORPSNTrace on the stack; while the
// scope's level is active, it writes lines to the scope's stream.
//
//     SdaiPrimitiveH GetMemberCount -> {
//        SdaiPrimitiveH GetMemberCount -> Taille3
//     SdaiPrimitiveH GetMemberCount -> }
//
// The service itself writes the first and last line, when a scope opens and when it closes, so that
// a call is visible even if the function writes nothing. Lines are written whole, one after the
// other, as the bytes given (ISO 8859-1). Only a line feed or carriage return within a line, which
// comes from data, is written as \n or \r: one line is always one message. On a terminal, other
// control characters appear as directives of exchange files (\X\1B), and letters as UTF-8.
//
// The level is 0 (off) unless set by Configure or by the environment variable KOR_TRACE (a whole
// number; any other value is reported on the standard error stream when the library is loaded, and
// leaves the trace off). A level is active if it is at most the one that is set; 12 shows the lines
// of the mapping functions.
//
// Lines go to the file named by KOR_TRACE_FILE or Configure, or else to the standard error stream.
// The file of KOR_TRACE_FILE is opened when the first line is written, in append mode, so that
// processes can share it; opening a pipe waits for its reader. If a file cannot be opened or
// written, only the lines are lost.
//
// With the trace off, a scope costs one test when it opens and one when it closes, and allocates
// nothing. Each scope has its own line, so a nested call does not disturb a line being written; the
// service serialises the lines of scopes and threads. It is usable for as long as the process runs,
// including in static destructors and ending threads.

#ifndef KORPSNTRACE_H
#define KORPSNTRACE_H

#include <atomic>
#include <functional>
#include <iosfwd>
#include <string_view>

#include "KORExport.h"
#include "KORString.h"

// The line that a scope is writing. Owned by the service.
class KOR_API KORPSNLigne {
  public:
    std::ostream& GetStream() { return stream_; }

  private:
    friend class KORPSNTrace;
    explicit KORPSNLigne(std::ostream& stream) : stream_(stream) {}
    std::ostream& stream_;
};

// Receives the lines of the trace instead of the file or standard error stream.
class KOR_API KORPSNSink {
  public:
    // Takes a complete line with its line break. Called on the tracing thread, so possibly by
    // several threads at once.
    virtual void Write(std::string_view line) noexcept = 0;

  protected:
    ~KORPSNSink() = default;
};

class KOR_API KORPSNTrace {
  public:
    // Opens a scope. The label must outlive it. The third argument is reserved; pass 0.
    KORPSNTrace(const char* label, int level, int /*reserved*/) : label_(label), level_(level) {
        if (LevelIsActive(level)) Open();
    }
    KORPSNTrace(const KORPSNTrace&) = delete;
    KORPSNTrace& operator=(const KORPSNTrace&) = delete;
    // Closes the scope.
    ~KORPSNTrace() {
        if (state_ != State::Closed) Close();
    }

    // The scope's level.
    int GetLevel() const { return level_; }

    // Whether lines of that level are written; non-zero if so.
    static int LevelIsActive(int level) {
        return level <= activeLevel_.load(std::memory_order_relaxed) ? 1 : 0;
    }

    // The indentation of the scope's first and last line: 3 times the number of enclosing scopes.
    static int GetIndent();

    // A level and the caller's sink for the lines; null for the configured file or stream.
    struct Target {
        int level;
        KORPSNSink* sink;
    };
    // Sets both and returns the previous values. The sink must live until no thread traces into it.
    static Target Redirect(Target target);

    // Writes a complete line of the caller's to the configured file or stream, whichever sink is
    // set: a sink passes on the lines that it lets through.
    static void Pass(std::string_view line);

    // A text of `count` blanks (at most 1,000).
    static KORString Indent(int count);

    // The scope's label.
    KORString GetMethod() const { return KORString(label_); }

    // The scope's line, to be written from the start: text that was written but not handed over
    // with Out is dropped.
    KORPSNLigne GetLigne();

    // Writes the line, adding a line break if it has none. Does nothing if the line is empty.
    void Out();

    // Sets the level and the path of the trace file, which is truncated now and appended to from
    // then on; null or "" for the standard error stream. Returns false if the file cannot be
    // opened; the trace is then off.
    static bool Configure(int level, const char* file);

  private:
    struct Line;
    class Lines;
    struct Service;

    // Lent: the scope has a line, but did not write its first line.
    enum class State : unsigned char { Closed, Lent, Open };

    void Open() noexcept;
    void Close() noexcept;
    void WriteMark(const char* mark) noexcept;

    // The current level. Read on every call, by any thread.
    static std::atomic<int> activeLevel_;

    const char* label_;
    int level_;
    State state_ = State::Closed;
    Line* line_ = nullptr;  // null until requested
};

// While it exists, a callable receives the lines of the trace up to a level instead of the previous
// sink. It is called on the tracing thread, where KORPSNTrace::GetIndent() returns the depth of the
// line's scope; if it throws, the line is lost. Captures must be destroyed in reverse order, when
// no thread traces into them any more.
class KOR_API KORPSNCapture final : public KORPSNSink {
  public:
    using Take = std::function<void(std::string_view line)>;

    explicit KORPSNCapture(Take take, int level = 12);
    ~KORPSNCapture();
    KORPSNCapture(const KORPSNCapture&) = delete;
    KORPSNCapture& operator=(const KORPSNCapture&) = delete;

    void Write(std::string_view line) noexcept override;

  private:
    const Take take_;
    const KORPSNTrace::Target before_;
};

#endif
