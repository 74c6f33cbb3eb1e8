// A file or text as a window of bytes that moves over it, with the line and column of every place.
//
// The reader works on the bytes between `at` and `end`; a NUL stands at `end`. Ahead makes sure
// that a token of ordinary length lies in the window as a whole; only strings, binary values,
// comments and white space may be longer.

#ifndef EXCHANGE_INPUT_H
#define EXCHANGE_INPUT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace exchange {

struct Place {
    std::uint64_t line;
    std::uint64_t column;
};

// Where the bytes come from. It can be read from its start again.
class Source {
  public:
    virtual ~Source() = default;
    // Reads up to `size` bytes; 0 at the end. On failure gives 0 and sets `error`.
    virtual std::size_t Read(char* to, std::size_t size) = 0;
    virtual void Rewind() = 0;
    // Whether all of it is UTF-8; reading goes on where it was. What cannot be read counts as such.
    virtual bool IsUtf8() = 0;

    std::string error;

    // A file; one that cannot be read twice (a pipe) is read into memory. Null, with the error,
    // when it cannot be opened.
    static std::unique_ptr<Source> Open(const std::string& path, std::string& error);
    // A text, which must outlive the source.
    static std::unique_ptr<Source> Of(std::string_view text);
};

class Input {
  public:
    static constexpr std::size_t kAhead = 4096;

    explicit Input(Source& source);

    const char* at;
    const char* end;

    bool IsUtf8() { return source_.IsUtf8(); }

    // Makes sure that the next kAhead bytes are in the window, or all that are left.
    void Ahead() {
        if (static_cast<std::size_t>(end - at) < kAhead && !atEnd_) Move(at);
    }

    // The same for bytes from `kept` on, which stay in the window. Gives where `kept` is now.
    const char* AheadKeeping(const char* kept) {
        if (static_cast<std::size_t>(end - at) < kAhead && !atEnd_) kept = Move(kept);
        return kept;
    }

    bool AtEnd() {
        if (at == end && !atEnd_) Move(at);
        return at == end;
    }

    // Goes back to the start.
    void Rewind();

    // Whether a line ends with this character: a line feed, or a carriage return that no line feed
    // follows. The next character must be in the window.
    static bool EndsLine(const char* where) {
        return *where == '\n' || (*where == '\r' && where[1] != '\n');
    }

    // To be called with the place behind a line break.
    void NewLine(const char* lineStart) {
        ++line_;
        lineStart_ = Offset(lineStart);
    }
    // The same for every line break between two places.
    void NewLines(const char* from, const char* to);

    Place PlaceOf(const char* where) const { return {line_, Offset(where) - lineStart_ + 1}; }

    std::uint64_t Offset(const char* where) const {
        return windowStart_ + static_cast<std::uint64_t>(where - window_.data());
    }

    // Called with the number of bytes read so far whenever the window moves.
    std::function<void(std::uint64_t)> progress;

  private:
    static constexpr std::size_t kBlock = std::size_t{1} << 18;

    // Moves the window so that `kept` is its start. Gives where `kept` is now.
    const char* Move(const char* kept);

    Source& source_;
    std::vector<char> window_;
    std::uint64_t windowStart_ = 0;
    bool atEnd_ = false;
    std::uint64_t line_ = 1;
    std::uint64_t lineStart_ = 0;
};

}  // namespace exchange

#endif
