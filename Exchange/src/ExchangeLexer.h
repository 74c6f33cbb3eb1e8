// The lexer of exchange files (ISO 10303-21): takes characters, tokens and literals from the
// current position of the input. Throws a SyntaxError with the place of anything that is not a
// token.

#ifndef EXCHANGE_EXCHANGELEXER_H
#define EXCHANGE_EXCHANGELEXER_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CharacterClasses.h"
#include "Digits.h"
#include "ExchangeText.h"
#include "Input.h"
#include "Problems.h"
#include "model/Cell.h"
#include "model/Dictionary.h"

namespace exchange {

class ExchangeLexer {
  public:
    // A string or binary of more than `longestText` bytes is an error.
    ExchangeLexer(Source& source, Problems& problems, std::size_t longestText)
        : in_(source), problems_(problems), longestText_(longestText) {}

    // ---- Places

    Place Here() const { return in_.PlaceOf(in_.at); }
    // The place of a character that was just taken.
    Place PlaceOf(const char* where) const { return in_.PlaceOf(where); }

    [[noreturn, gnu::cold]] static void Fail(Place place, std::string_view text);
    [[noreturn, gnu::cold]] void FailHere(std::string_view text) const { Fail(Here(), text); }
    // Says what was expected, and describes the text at this position.
    [[noreturn, gnu::cold]] void FailExpecting(std::string_view what);
    [[noreturn, gnu::cold]] void FailExpecting(char c);

    // ---- The input

    bool AtEnd() { return in_.AtEnd(); }
    const char* At() const { return in_.at; }
    char Peek() const { return *in_.at; }
    void Advance(std::size_t count = 1) { in_.at += count; }

    // Calls `progress` from time to time with the number of bytes read so far.
    void TellProgress(std::function<void(std::uint64_t)> progress) {
        in_.progress = std::move(progress);
    }
    Input::Position Now() const { return in_.Now(); }
    void GoTo(const Input::Position& position) { in_.GoTo(position); }
    void SkipTo(const Input::Position& position) { in_.SkipTo(position); }
    // What is there without reading on.
    std::string_view Window() const { return {in_.at, static_cast<std::size_t>(in_.end - in_.at)}; }

    // What is read is part of a file: what cannot be judged without the rest is an error.
    void ReadPart() { part_ = true; }
    void FailInPart(Place place) const {
        if (part_) Fail(place, "this is read with what stands before it");
    }
    void SkipByteOrderMark();

    // ---- Between tokens

    // Moves to the next token, skipping white space, comments and print control directives.
    void Skip() {
        if (Is(*in_.at, kNoToken)) {
            SkipNoTokens();
        } else {
            in_.Ahead();
        }
    }

    // Skips past the next character `end`. A doubled apostrophe in a string is read as the end of
    // one string and the start of another, which makes no difference here.
    void SkipPast(char end);

    // Skips a word of any length.
    void SkipWord();

    // Takes the text up to and including the next ";": strings and addresses unchanged, without the
    // white space and comments between tokens.
    std::string TakeStatement();

    // Skips past the next ";" that is followed by a new statement.
    void SkipStatement();

    // ---- Tokens

    bool TakeIf(char c) {
        if (*in_.at != c) {
            if (!Is(*in_.at, kNoToken)) return false;
            SkipNoTokens();
            if (*in_.at != c) return false;
        }
        ++in_.at;
        return true;
    }

    void Expect(char c) {
        if (!TakeIf(c)) FailExpecting(c);
    }

    // Takes the word if it is next and complete; returns whether it was.
    bool TakeWord(std::string_view word);
    void ExpectWord(std::string_view word);

    // A keyword in upper case, user-defined ones with their "!". Valid until the next token is
    // read.
    std::string_view Keyword();

    // The text up to the next "(", which is not taken; empty if that is far away or not known yet.
    std::string_view UpToParenthesis() const {
        constexpr std::ptrdiff_t kFar = 128;
        for (const char* at = in_.at; at < in_.end && at - in_.at < kFar; at += 8) {
            const int position = PositionIn(NextEight(at), '(');
            if (position < 8) return {in_.at, static_cast<std::size_t>(at + position - in_.at)};
        }
        return {};
    }

    // The letters and digits at this position.
    std::string_view Word();

    // The number after a "#". A lenient reader maps each number larger than Model::kLargestId to a
    // fixed number above that limit.
    std::uint64_t InstanceName() {
        in_.Ahead();
        return InstanceNameInWindow();
    }
    // The same without moving the window, so that positions in it stay valid: after Skip and a "#".
    std::uint64_t InstanceNameInWindow() {
        std::uint64_t id = 0;
        const char* const end = TakeName(in_.at, id);
        if (end == in_.at || end - in_.at > kFewDigits) return OtherInstanceName(end);
        in_.at = end;
        return id;
    }
    // The number of these digits, of which there is one; a fixed number above the limit for each
    // that is too large.
    std::uint64_t IdOf(std::string_view digits);
    // The number as written.
    std::string NameOf(std::uint64_t id) const;

    // ---- Literals

    // An integer or real, at its sign or first digit; a number without a point is a real if one is
    // expected.
    kor::Cell Number(bool realExpected);

    // Takes reals of a list up to and including its ")". Returns false where a member should begin
    // that is not a real, or one written in an unusual way; those before it are taken.
    bool TakeReals(std::vector<double>& reals);

    // A string, after its opening apostrophe.
    kor::Cell String() {
        const char* const start = in_.at;
        const char* at = start;
        while (Is(*at, kPlain)) ++at;
        const auto size = static_cast<std::size_t>(at - start);
        if (*at == '\'' && at + 1 < in_.end && at[1] != '\'' && size <= longestText_) {
            in_.at = at + 1;
            return kor::Cell::OfText(kor::Tag::Text, {start, size});
        }
        return EncodedString(start);
    }

    // A binary value, after its opening quotation mark.
    kor::Cell Binary();

    // An enumeration item, after its first dot. T, F and U are truth values, unless the schema
    // declares an enumeration.
    kor::Cell Enumeration(const kor::Domain* domain);

  private:
    // The number of digits with which an instance name cannot be too large.
    static constexpr std::ptrdiff_t kFewDigits = 18;

    // Skips a character, which may end a line.
    void Pass() {
        in_.Ahead();
        const bool endsLine = Input::EndsLine(in_.at++);
        if (endsLine) in_.NewLine(in_.at);
    }
    // Most often it is the end of a line that is skipped, and nothing else.
    void SkipNoTokens() {
        if (*in_.at == '\n') in_.NewLine(++in_.at);
        if (Is(*in_.at, kNoToken)) SkipOtherNoTokens();
        in_.Ahead();
    }
    void SkipOtherNoTokens();
    bool SkipOther();
    void SkipComment();
    std::string Found();
    std::uint64_t OtherInstanceName(const char* end);
    std::uint64_t LongInstanceName(const char* end);
    void CheckText(Place place, std::size_t size) const;
    void CheckLength(const char* start, const char* end) const;
    kor::Cell OtherNumber(bool realExpected);
    kor::Cell Integer(const char* start, const char* end, bool realExpected) const;
    double Real(const char* start, const char* end) const;
    kor::Cell EncodedString(const char* start);
    Encoding EncodingOf(Place place, std::string_view encoded);

    Input in_;
    Problems& problems_;
    const std::size_t longestText_;
    bool part_ = false;
    std::string keyword_;
    std::map<std::string, std::uint64_t> greatNames_;  // the numbers for names that are too large
    std::optional<Encoding> encoding_;                 // the file's encoding, once it matters
};

}  // namespace exchange

#endif
