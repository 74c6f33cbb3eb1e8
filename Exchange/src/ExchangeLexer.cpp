// The lexer of exchange files: characters, tokens and literals.

#include "ExchangeLexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

#include "ExchangeText.h"
#include "Quoted.h"
#include "model/Model.h"
#include "services/Utf8.h"

namespace exchange {

using kor::Cell;
using kor::Domain;
using kor::Tag;

namespace {

// Powers of ten that a double represents exactly.
constexpr std::array<double, 23> kPowersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Takes the exponent at an "E", which moves the point of a value that has that many decimal places.
// Returns the position after it; null if it is large or has no digits.
const char* TakeExponent(const char* at, std::ptrdiff_t places, double& value) {
    ++at;
    const bool isNegative = *at == '-';
    if (isNegative || *at == '+') ++at;
    std::uint64_t exponent = 0;
    const char* const end = TakeFewDigits(at, exponent);
    if (end == at || end - at > 3) return nullptr;
    const auto moved = static_cast<std::ptrdiff_t>(exponent);
    const std::ptrdiff_t scale = (isNegative ? -moved : moved) - places;
    if (scale < -22 || scale > 22) return nullptr;
    if (scale < 0) {
        value /= kPowersOfTen[static_cast<std::size_t>(-scale)];
    } else {
        value *= kPowersOfTen[static_cast<std::size_t>(scale)];
    }
    return end;
}

// Takes a real at its sign or first digit if it has few digits, as most have: their end is found
// with their value, those after the point eight at a time. Returns the position after it; null for
// any other number, of which nothing is taken.
inline const char* TakeUsualReal(const char* start, double& value) {
    // Signs are not predictable: nothing branches on one.
    const char* const first = start + (Is(*start, kDigit) ? 0 : 1);
    std::uint64_t digits = 0;
    const char* const point = TakeFewDigits(first, digits);
    if (*point != '.' || point == first) return nullptr;
    const char* const end = TakeDigits(point + 1, digits);
    // If a double represents both the digits and the power of ten exactly, as with up to 15 digits,
    // one operation yields the nearest double.
    constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
    constexpr std::ptrdiff_t kMostDigits = 19;  // of an integer of 64 bits
    if (end - first > kMostDigits + 1 || digits > kExact) return nullptr;
    static constexpr std::array<double, 2> kSigns{1, -1};
    value = kSigns[*start == '-' ? 1 : 0] * static_cast<double>(digits);
    const std::ptrdiff_t places = end - point - 1;
    if (*end == 'E' || *end == 'e') return TakeExponent(end, places, value);
    value /= kPowersOfTen[static_cast<std::size_t>(places)];
    return end;
}

// Whether a number out of the range of double is too large rather than too small: whether, after
// the exponent has moved the point, its first non-zero digit is before the point.
bool IsLarge(const char* start, const char* end) {
    const char* const exponentSign =
        std::find_if(start, end, [](char c) { return c == 'E' || c == 'e'; });
    const char* const point = std::find(start, exponentSign, '.');
    const char* const first =
        std::find_if(start, exponentSign, [](char c) { return c >= '1' && c <= '9'; });
    long exponent = 0;
    if (exponentSign != end) {
        const char* digits = exponentSign + (exponentSign[1] == '+' ? 2 : 1);
        // Any exponent with that many digits is simply large.
        if (std::from_chars(digits, end, exponent).ec == std::errc::result_out_of_range) {
            exponent = std::numeric_limits<int>::max() * (*digits == '-' ? -1L : 1L);
        }
    }
    return point - first + exponent > 0;
}

}  // namespace

void ExchangeLexer::Fail(Place place, std::string_view text) {
    throw SyntaxError{place, std::string(text)};
}

void ExchangeLexer::FailExpecting(std::string_view what) {
    FailHere(std::string(what) + " expected, found " + Found());
}

void ExchangeLexer::FailExpecting(char c) { FailExpecting(std::string("'") + c + "'"); }

// A description of the text at this position, for messages.
std::string ExchangeLexer::Found() {
    if (in_.AtEnd()) return "the end of the file";
    const char c = *in_.at;
    if (!Is(c, kLetter)) return Quoted(std::string_view(in_.at, 1));
    const char* end = in_.at;
    while (Is(*end, kLetter | kDigit)) ++end;
    return Quoted(std::string_view(in_.at, static_cast<std::size_t>(end - in_.at)));
}

void ExchangeLexer::SkipByteOrderMark() {
    if (std::string_view(in_.at, static_cast<std::size_t>(in_.end - in_.at))
            .starts_with("\xEF\xBB\xBF")) {
        in_.at += 3;
    }
}

// ---- Between tokens

void ExchangeLexer::SkipOtherNoTokens() {
    while (Is(*in_.at, kNoToken)) {
        const char c = *in_.at;
        if (c == '\n') {
            ++in_.at;
            in_.NewLine(in_.at);
        } else if (Is(c, kSpace)) {
            ++in_.at;
        } else if (c == '\r') {
            Pass();
        } else if (c == '/' || c == '\\') {
            if (!SkipOther()) break;
        } else if (in_.at != in_.end || in_.AtEnd()) {
            break;
        }
    }
}

bool ExchangeLexer::SkipOther() {
    in_.Ahead();
    const char* at = in_.at;
    if (at[0] == '/' && at[1] == '*') {
        SkipComment();
        return true;
    }
    if (at[0] == '\\' && (at[1] == 'N' || at[1] == 'F') && at[2] == '\\') {
        in_.at += 3;
        return true;
    }
    return false;
}

void ExchangeLexer::SkipComment() {
    const Place start = Here();
    in_.at += 2;
    for (;;) {
        in_.Ahead();
        if (in_.at == in_.end) Fail(start, "a comment without an end");
        if (in_.at[0] == '*' && in_.at[1] == '/') break;
        Pass();
    }
    in_.at += 2;
}

void ExchangeLexer::SkipPast(char end) {
    const Place start = Here();
    ++in_.at;
    for (;;) {
        in_.Ahead();
        if (in_.AtEnd()) Fail(start, std::string("there is no ") + end + " to this");
        if (*in_.at == end) break;
        Pass();
    }
    ++in_.at;
}

void ExchangeLexer::SkipWord() {
    for (; Is(*in_.at, kLetter | kDigit); in_.Ahead()) ++in_.at;
}

std::string ExchangeLexer::TakeStatement() {
    const Place start = Here();
    std::string statement;
    for (char end = '\0';;) {
        if (end == '\0') Skip();
        in_.Ahead();
        if (in_.AtEnd()) Fail(start, "a section without ENDSEC;");
        const char c = *in_.at;
        Pass();
        if (end == '\0' && c == ';') return statement;
        if (c != '\n' && c != '\r') statement += c;
        if (c == end) {
            end = '\0';
        } else if (end == '\0' && (c == '\'' || c == '<')) {
            end = c == '<' ? '>' : c;
        }
    }
}

void ExchangeLexer::SkipStatement() {
    while (!in_.AtEnd()) {
        const char c = *in_.at;
        Pass();
        if (c != ';') continue;
        Skip();
        if (*in_.at == '#' || *in_.at == 'E') return;
    }
}

// ---- Tokens

// A word of letters and digits; it stays in the window until the next token is read.
std::string_view ExchangeLexer::Word() {
    const char* start = in_.at;
    const char* at = start;
    while (Is(*at, kLetter | kDigit)) ++at;
    if (static_cast<std::size_t>(at - start) >= Input::kAhead / 2) FailHere("a word too long");
    in_.at = at;
    return {start, static_cast<std::size_t>(at - start)};
}

std::string_view ExchangeLexer::Keyword() {
    Skip();
    const char* start = in_.at;
    const char* at = start + (*start == '!' ? 1 : 0);
    if (!Is(*at, kLetter)) FailExpecting("a keyword");
    unsigned char classes = 0;
    for (; Is(*at, kLetter | kDigit); ++at) classes |= kClasses[static_cast<unsigned char>(*at)];
    const std::string_view keyword(start, static_cast<std::size_t>(at - start));
    if (keyword.size() >= Input::kAhead / 2) FailHere("a word too long");
    in_.at = at;
    if ((classes & kLower) == 0) return keyword;
    keyword_ = kor::Folded(keyword);
    return keyword_;
}

bool ExchangeLexer::TakeWord(std::string_view word) {
    Skip();
    const std::string_view ahead(in_.at, static_cast<std::size_t>(in_.end - in_.at));
    if (!ahead.starts_with(word)) return false;
    if (Is(in_.at[word.size()], kLetter | kDigit) || in_.at[word.size()] == '-') return false;
    in_.at += word.size();
    return true;
}

void ExchangeLexer::ExpectWord(std::string_view word) {
    if (!TakeWord(word)) FailExpecting(word);
}

// A name of no digits or many.
std::uint64_t ExchangeLexer::OtherInstanceName(const char* end) {
    if (end == in_.at) FailHere("a number expected after '#', found " + Found());
    const std::uint64_t id = LongInstanceName(end);
    in_.at = end;
    return id;
}

// A name of many digits: it may begin with zeros.
std::uint64_t ExchangeLexer::LongInstanceName(const char* end) {
    if (static_cast<std::size_t>(end - in_.at) >= Input::kAhead / 2) {
        FailHere("an instance name too long");
    }
    const std::uint64_t id = IdOf({in_.at, static_cast<std::size_t>(end - in_.at)});
    if (id <= kor::Model::kLargestId) return id;
    if (!problems_.Mends()) {
        FailHere("an instance name beyond " + std::to_string(kor::Model::kLargestId) +
                 " (--lenient numbers the instance anew)");
    }
    FailInPart(Here());
    return id;
}

std::uint64_t ExchangeLexer::IdOf(std::string_view digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size() - 1));
    std::uint64_t id = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), id);
    if (read.ec == std::errc() && id <= kor::Model::kLargestId) return id;
    const std::uint64_t next = kor::Model::kLargestId + 1 + greatNames_.size();
    return greatNames_.emplace(std::string(digits), next).first->second;
}

std::string ExchangeLexer::NameOf(std::uint64_t id) const {
    for (const auto& [digits, standsFor] : greatNames_) {
        if (standsFor == id) return '#' + digits;
    }
    return '#' + std::to_string(id);
}

// ---- Literals

// Checks the form of a number and finds its end.
Cell ExchangeLexer::Number(bool realExpected) {
    double value = 0;
    if (const char* const end = TakeUsualReal(in_.at, value)) {
        in_.at = end;
        return Cell::Of(Tag::Real, value);
    }
    return OtherNumber(realExpected);
}

Cell ExchangeLexer::OtherNumber(bool realExpected) {
    const char* const start = in_.at;
    const char* at = start + (Is(*start, kDigit) ? 0 : 1);
    const auto takeDigits = [this, &at](std::string_view what) {
        const char* const first = at;
        while (Is(*at, kDigit)) ++at;
        if (at != first) return;
        in_.at = at;
        FailExpecting(what);
    };
    takeDigits("a digit");
    bool isReal = *at == '.';
    if (isReal) {
        ++at;
        while (Is(*at, kDigit)) ++at;
    }
    if (*at == 'E' || *at == 'e') {
        isReal = true;
        ++at;
        if (*at == '+' || *at == '-') ++at;
        takeDigits("the digits of an exponent");
    }
    in_.at = at;
    CheckLength(start, at);
    return isReal ? Cell::Of(Tag::Real, Real(start, at)) : Integer(start, at, realExpected);
}

bool ExchangeLexer::TakeReals(std::vector<double>& reals) {
    for (;;) {
        Skip();
        if (!Is(*in_.at, kNumber)) return false;
        double value = 0;
        const char* const end = TakeUsualReal(in_.at, value);
        if (end == nullptr || (*end != ',' && *end != ')')) return false;
        reals.emplace_back() = value;
        in_.at = end + 1;
        if (*end == ')') return true;
    }
}

void ExchangeLexer::CheckLength(const char* start, const char* end) const {
    if (static_cast<std::size_t>(end - start) >= Input::kAhead / 2) {
        Fail(in_.PlaceOf(start), "a number too long");
    }
}

Cell ExchangeLexer::Integer(const char* start, const char* end, bool realExpected) const {
    // A number without a point where a real is declared is a real.
    if (realExpected) return Cell::Of(Tag::Real, Real(start, end));
    long value = 0;
    const char* digits = start + (*start == '+' ? 1 : 0);
    if (std::from_chars(digits, end, value).ec != std::errc()) {
        Fail(in_.PlaceOf(start),
             "an integer out of range: " + Quoted({start, static_cast<std::size_t>(end - start)}));
    }
    return Cell::Of(Tag::Integer, value);
}

double ExchangeLexer::Real(const char* start, const char* end) const {
    const char* digits = start + (*start == '+' ? 1 : 0);
    double value = 0;
    if (std::from_chars(digits, end, value).ec != std::errc::result_out_of_range) return value;
    if (IsLarge(digits, end)) {
        Fail(in_.PlaceOf(start),
             "a real out of range: " + Quoted({start, static_cast<std::size_t>(end - start)}));
    }
    return *start == '-' ? -0.0 : 0.0;  // too small for a double
}

// A string that is long or contains more than plain characters.
Cell ExchangeLexer::EncodedString(const char* start) {
    const Place place = in_.PlaceOf(start - 1);
    for (;;) {
        while (in_.at != in_.end && *in_.at != '\'') ++in_.at;
        start = in_.AheadKeeping(start);
        const auto size = static_cast<std::size_t>(in_.at - start);
        if (size > longestText_) in_.NewLines(start, in_.at);  // what follows is read on
        CheckText(place, size);
        if (in_.at == in_.end) Fail(place, "a string without an end");
        if (*in_.at != '\'') continue;
        if (in_.at[1] != '\'') break;
        in_.at += 2;
    }
    const std::string_view encoded(start, static_cast<std::size_t>(in_.at - start));
    const DecodedString decoded = DecodeString(encoded, EncodingOf(place, encoded));
    const char* const error = start + (decoded.error != nullptr ? decoded.errorAt : 0);
    in_.NewLines(start, error);
    const Place errorPlace = in_.PlaceOf(error);
    in_.NewLines(error, in_.at);
    ++in_.at;
    if (decoded.error != nullptr) problems_.Mend(errorPlace, decoded.error);
    CheckText(place, static_cast<std::size_t>(decoded.text.GetLengthInChar()));
    return Cell::OfText(Tag::Text, decoded.text);
}

// The encoding of raw characters in strings. A file that is not entirely UTF-8 is ISO 8859-1; this
// is determined, and reported, when it first matters.
Encoding ExchangeLexer::EncodingOf(Place place, std::string_view encoded) {
    const bool ascii = std::all_of(encoded.begin(), encoded.end(),
                                   [](char c) { return kor::CodePoint(c) < 0x80; });
    if (!ascii && !encoding_.has_value()) {
        encoding_ = in_.IsUtf8() ? Encoding::Utf8 : Encoding::Latin1;
        if (encoding_ == Encoding::Latin1) {
            FailInPart(place);
            problems_.Warn(place, "the file is not UTF-8 throughout and is read as ISO 8859-1");
        }
    }
    return encoding_.value_or(Encoding::Utf8);
}

// Directives and line breaks in a binary are ignored; its letters may be lower case.
Cell ExchangeLexer::Binary() {
    const Place place = in_.PlaceOf(in_.at - 1);
    std::string digits;
    for (;; in_.Ahead()) {
        const char* const start = in_.at;
        while (Is(*in_.at, kHex)) ++in_.at;
        digits.append(start, in_.at);
        CheckText(place, digits.size());
        if (*in_.at == '\n' || *in_.at == '\r') {
            Pass();
        } else if (*in_.at == '\\') {
            if (!SkipOther()) break;
        } else if (in_.at != in_.end || in_.AtEnd()) {
            break;
        }
    }
    if (*in_.at != '"') Fail(place, "a binary value may hold hexadecimal digits only");
    if (digits.empty() || digits.front() > '3') {
        Fail(place, "a binary value begins with a digit from 0 to 3");
    }
    ++in_.at;
    return Cell::OfText(Tag::Binary, kor::Folded(digits));
}

void ExchangeLexer::CheckText(Place place, std::size_t size) const {
    if (size > longestText_) {
        Fail(place, "a string or binary of more than " + std::to_string(longestText_) + " bytes");
    }
}

Cell ExchangeLexer::Enumeration(const Domain* domain) {
    const Place place = in_.PlaceOf(in_.at - 1);
    const std::string_view name = Word();
    if (name.empty() || *in_.at != '.') {
        Fail(place, "an enumeration value is a name between two points");
    }
    ++in_.at;
    const kor::Base base = domain != nullptr ? domain->base : kor::Base::Generic;
    if (name.size() == 1 && base != kor::Base::Enumeration) {
        const bool boolean = base == kor::Base::Boolean;
        switch (name.front()) {
            case 'T': return Cell::Of(boolean ? Tag::Boolean : Tag::Logical, SdaiLogical(sdaiTRUE));
            case 'F':
                return Cell::Of(boolean ? Tag::Boolean : Tag::Logical, SdaiLogical(sdaiFALSE));
            case 'U': return Cell::Of(Tag::Logical, SdaiLogical());
            default: break;
        }
    }
    return Cell::OfText(Tag::Enumeration, name);
}

}  // namespace exchange
