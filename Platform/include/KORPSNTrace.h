// The trace service. A function opens a scope by building a KORPSNTrace on its stack; while the
// scope's level is active it writes lines into the stream that the scope lends it.
//
//     SdaiPrimitiveH GetMemberCount -> {
//        SdaiPrimitiveH GetMemberCount -> Taille3
//     SdaiPrimitiveH GetMemberCount -> }
//
// The service writes the first and the last line itself: one when a scope opens and one when it
// closes, so that a call shows even where the function writes nothing. Lines go out whole, one
// after the other, as the bytes that were written (ISO 8859-1), except that a line feed or carriage
// return in the middle of a line, which only data can bring, is written as \n or \r: one line is
// always one message.
//
// The level is 0 (off) unless the environment variable KOR_TRACE (a whole number; anything else is
// told on the standard error stream when the library is loaded, and leaves the trace off) or
// Configure sets it; a level is active when it is at most the one that is set, so 12 shows the
// lines of the mapping functions.
//
// Lines go to the file that KOR_TRACE_FILE or Configure names, else to the standard error stream.
// The file of KOR_TRACE_FILE is opened when the first line is written, and appended to, so that
// processes can share it; a pipe then waits for its reader. A file that cannot be opened or written
// loses lines and nothing else.
//
// Off, a scope costs one test when it opens and one when it closes, and allocates nothing. Each
// scope has a line of its own, so that a call in the middle of a line leaves it as it is; the
// service puts the lines of scopes and threads one after the other. It can be used for as long as
// the process runs: by static destructors and ending threads, too.

#ifndef KORPSNTRACE_H
#define KORPSNTRACE_H

#include <atomic>
#include <functional>
#include <iosfwd>
#include <string_view>

#include "KORExport.h"
#include "KORString.h"

// The line that a scope is writing. It belongs to the service.
class KOR_API KORPSNLigne {
  public:
    std::ostream& GetStream() { return stream_; }

  private:
    friend class KORPSNTrace;
    explicit KORPSNLigne(std::ostream& stream) : stream_(stream) {}
    std::ostream& stream_;
};

// Takes the lines of the trace in place of the file or the standard error stream.
class KOR_API KORPSNSink {
  public:
    // A finished line with its line break. Called by the thread that traces, by several at once
    // where several do.
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
    // Closes it.
    ~KORPSNTrace() {
        if (state_ != State::Closed) Close();
    }

    // The level that the scope was built with.
    int GetLevel() const { return level_; }

    // Whether lines of that level are written at all; non-zero for yes.
    static int LevelIsActive(int level) {
        return level <= activeLevel_.load(std::memory_order_relaxed) ? 1 : 0;
    }

    // The indentation of the scope's first and last line: 3 times the number of scopes around it.
    static int GetIndent();

    // A level, and a sink of the caller's for its lines; null: the file or stream that is
    // configured.
    struct Target {
        int level;
        KORPSNSink* sink;
    };
    // Sets both from now on and gives what was set before. The sink must stay until no thread
    // traces into it any more.
    static Target Redirect(Target target);

    // Hands a finished line of the caller's own over to the file or stream that is configured,
    // whatever takes the lines of the trace: so a sink passes on what it lets through.
    static void Pass(std::string_view line);

    // That many blanks (at most 1,000).
    static KORString Indent(int count);

    // The label.
    KORString GetMethod() const { return KORString(label_); }

    // The scope's line to write into, as a new stream would: what was written into it and not
    // handed over is dropped.
    KORPSNLigne GetLigne();

    // Hands the finished line over, the line break at its end included; it gets one if it has none.
    // Nothing where nothing was written.
    void Out();

    // Sets the level and the sink: the path of a file, which is emptied here and appended to from
    // then on, or null or "" for the standard error stream. False when the file cannot be opened;
    // the trace is then off.
    static bool Configure(int level, const char* file);

  private:
    struct Line;
    class Lines;
    struct Service;

    // Lent: the scope wrote no first line, but has a line.
    enum class State : unsigned char { Closed, Lent, Open };

    void Open() noexcept;
    void Close() noexcept;
    void WriteMark(const char* mark) noexcept;

    // The level that is set. Read on every call, by any thread.
    static std::atomic<int> activeLevel_;

    const char* label_;
    int level_;
    State state_ = State::Closed;
    Line* line_ = nullptr;  // once it was asked for
};

// While it lives, a callable takes the lines of the trace up to a level, in place of what took them
// before. It is called by the thread that traces, which may ask KORPSNTrace::GetIndent() how deep
// the scope of the line is; what it throws is lost with the line. Captures end in the reverse of
// their order, and when no thread traces into them any more.
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
