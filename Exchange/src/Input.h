// A file or text as a moving window of bytes, with the line and column of every place.
//
// The reader works on the bytes between `at` and `end`, where there is a NUL. Ahead ensures that a
// token of ordinary length is completely in the window; only strings, binary values, comments and
// white space may be longer.

#ifndef EXCHANGE_INPUT_H
#define EXCHANGE_INPUT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/Place.h"

namespace exchange {

using kor::Place;

// The source of the bytes. It can be read again.
class Source {
  public:
    virtual ~Source() = default;
    // Reads up to `size` bytes; returns 0 at the end. On failure, returns 0 and sets `error`.
    virtual std::size_t Read(char* to, std::size_t size) = 0;
    // Continues with the byte at an offset.
    virtual void Seek(std::uint64_t offset) = 0;
    // The number of bytes; 0 if it is not known.
    virtual std::uint64_t Size() const = 0;
    // Another source of the same bytes, for another thread to read meanwhile; null if there can be
    // none.
    virtual std::unique_ptr<Source> Again() const = 0;
    // Whether the whole source is UTF-8; does not change the read position. Unreadable data counts
    // as UTF-8.
    virtual bool IsUtf8() = 0;

    std::string error;

    // Opens a file; one that cannot be read twice (a pipe) is read into memory. Returns null and
    // sets the error if it cannot be opened.
    static std::unique_ptr<Source> Open(const std::string& path, std::string& error);
    // A text, which must outlive the source.
    static std::unique_ptr<Source> Of(std::string_view text);
};

class Input {
  public:
    static constexpr std::size_t kAhead = 4096;
    // The number of bytes after the window that may be read.
    static constexpr std::size_t kBeyond = 8;

    explicit Input(Source& source);

    const char* at;
    const char* end;

    bool IsUtf8() { return source_.IsUtf8(); }

    // Ensures that the next kAhead bytes, or all that are left, are in the window.
    void Ahead() {
        if (at > last_) Move(at);
    }

    // The same, keeping the bytes from `kept` on in the window. Returns the new position of `kept`.
    const char* AheadKeeping(const char* kept) {
        if (at > last_) kept = Move(kept);
        return kept;
    }

    bool AtEnd() {
        if (at == end && !atEnd_) Move(at);
        return at == end;
    }

    // A place in the input from which it can be read again.
    struct Position {
        std::uint64_t offset = 0;
        std::uint64_t line = 1;
        std::uint64_t lineStart = 0;  // the offset at which the line begins
    };
    Position Now() const { return {Offset(at), line_, lineStart_}; }
    void GoTo(const Position& position);
    // The same without reading again what is in the window. The source must not have changed.
    void SkipTo(const Position& position);

    // Whether a line ends with this character: a line feed, or a carriage return not followed by
    // one. The next character must be in the window.
    static bool EndsLine(const char* where) {
        return *where == '\n' || (*where == '\r' && where[1] != '\n');
    }

    // Call with the position after a line break.
    void NewLine(const char* lineStart) {
        ++line_;
        lineStart_ = Offset(lineStart);
    }
    // The same for every line break between two positions.
    void NewLines(const char* from, const char* to);

    Place PlaceOf(const char* where) const { return {line_, Offset(where) - lineStart_ + 1}; }

    std::uint64_t Offset(const char* where) const {
        return windowStart_ + static_cast<std::uint64_t>(where - window_.data());
    }

    // Called with the number of bytes read so far whenever the window moves.
    std::function<void(std::uint64_t)> progress;

  private:
    static constexpr std::size_t kBlock = std::size_t{1} << 18;

    // Moves the window so that it starts at `kept`. Returns the new position of `kept`.
    const char* Move(const char* kept);

    Source& source_;
    std::vector<char> window_;
    std::uint64_t windowStart_ = 0;
    bool atEnd_ = false;
    const char* last_;  // the last position that kAhead bytes follow, or the end of the input
    std::uint64_t line_ = 1;
    std::uint64_t lineStart_ = 0;
};

}  // namespace exchange

#endif
