// Values in the notation of exchange files.

#include "ExchangeText.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "CharacterClasses.h"
#include "CodePages.h"
#include "model/Cell.h"
#include "model/Literals.h"
#include "services/Utf8.h"

namespace exchange {

namespace {

// Hexadecimal digits in files may be lower case.
int Digit(char c) { return kor::HexValue(SdaiFoldCase(c)); }

bool IsHex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return Digit(c) >= 0; });
}

// Whether a character is written unchanged in a string.
template <class Char>
bool IsPlain(Char c) {
    return kor::CodePoint(c) <= kor::kLastNarrow && Is(static_cast<char>(c), kPlain);
}

// The number of digits per character in a \X2\ or \X4\ directive at the start of a text; 0 if there
// is no directive.
std::size_t WidthOfDirective(std::string_view text) {
    return text.starts_with("\\X2\\") ? 4 : text.starts_with("\\X4\\") ? 8 : 0;
}

// The length of a directive at the start of a text; 0 if there is none.
std::size_t LengthOfDirective(std::string_view text) {
    const std::size_t width = WidthOfDirective(text);
    if (width == 0) return 0;
    std::size_t at = kor::kDirectiveStart;
    while (at + width <= text.size() && IsHex(text.substr(at, width))) at += width;
    const bool whole = at > kor::kDirectiveStart && text.substr(at).starts_with(kor::kDirectiveEnd);
    return whole ? at + kor::kDirectiveEnd.size() : 0;
}

char32_t TakeHex(std::string_view& digits, std::size_t width) {
    char32_t value = 0;
    for (const char c : digits.substr(0, width)) {
        value = 16 * value + static_cast<char32_t>(Digit(c));
    }
    digits.remove_prefix(width);
    return value;
}

// Takes a code point from the digits of a directive. Two UTF-16 surrogates form one.
char32_t TakeCodePoint(std::string_view& digits, std::size_t width) {
    const char32_t value = TakeHex(digits, width);
    if (kor::IsHighSurrogate(value) && digits.size() >= width) {
        std::string_view rest = digits;
        const char32_t low = TakeHex(rest, width);
        if (kor::IsLowSurrogate(low)) {
            digits = rest;
            return 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00);
        }
    }
    return value;
}

// Consecutive characters share a directive.
void AppendWide(std::string& to, std::u32string_view characters) {
    std::size_t width = 0;
    for (const char32_t c : characters) {
        if (kor::DirectiveWidth(c) != width) {
            if (width != 0) to += kor::kDirectiveEnd;
            width = kor::DirectiveWidth(c);
            to += width == 8 ? "\\X4\\" : "\\X2\\";
        }
        kor::AppendHex(to, c, width);
    }
    to += kor::kDirectiveEnd;
}

void AppendPlain(std::string& to, std::string_view characters) { to.append(characters); }
void AppendPlain(std::string& to, std::u32string_view characters) {
    for (const char32_t c : characters) to += static_cast<char>(c);
}

template <class Char>
void AppendCharacters(std::string& to, std::basic_string_view<Char> text) {
    // Takes the leading characters for which the predicate holds.
    const auto take = [&text](auto holds) {
        const auto end = std::find_if_not(text.begin(), text.end(), holds);
        const auto taken = text.substr(0, static_cast<std::size_t>(end - text.begin()));
        text.remove_prefix(taken.size());
        return taken;
    };
    to += '\'';
    for (;;) {
        AppendPlain(to, take([](Char c) { return IsPlain(c); }));
        if (text.empty()) break;
        const char32_t c = kor::CodePoint(text.front());
        if constexpr (std::is_same_v<Char, char32_t>) {
            if (c > kor::kLastNarrow) {
                AppendWide(to, take([](Char next) { return next > kor::kLastNarrow; }));
                continue;
            }
        }
        if (c == '\'' || c == '\\') {
            to.append(2, static_cast<char>(c));
        } else {
            to += "\\X\\";
            kor::AppendHex(to, c, 2);
        }
        text.remove_prefix(1);
    }
    to += '\'';
}

}  // namespace

void AppendString(std::string& to, std::string_view text) { AppendCharacters(to, text); }
void AppendString(std::string& to, std::u32string_view text) { AppendCharacters(to, text); }
void AppendString(std::string& to, const KORUnicodeString& text) {
    kor::TextAccess::Characters(text, [&to](auto characters) { AppendCharacters(to, characters); });
}

void AppendInteger(std::string& to, long value) {
    char digits[24];
    to.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void AppendReal(std::string& to, double value) { kor::AppendReal(to, value); }

void AppendLogical(std::string& to, SdaiLogical value) {
    AppendEnumeration(to, value == sdaiLTRUE ? "T" : value == sdaiLFALSE ? "F" : "U");
}

void AppendEnumeration(std::string& to, std::string_view name) {
    to += '.';
    to += name;
    to += '.';
}

void AppendBinary(std::string& to, std::string_view digits) {
    to += '"';
    to += digits;
    to += '"';
}

namespace {

class StringDecoder {
  public:
    StringDecoder(std::string_view encoded, Encoding encoding)
        : encoded_(encoded), rest_(encoded), encoding_(encoding) {}

    DecodedString Decode() {
        while (!rest_.empty()) {
            const char c = rest_.front();
            if (c == '\\') {
                Directive();
            } else if (c == '\'') {
                // It must be doubled, otherwise it would have ended the string.
                text_.Add('\'');
                rest_.remove_prefix(std::min<std::size_t>(2, rest_.size()));
            } else if (c == '\n' || c == '\r') {
                rest_.remove_prefix(1);
            } else {
                TakeRaw();
            }
        }
        decoded_.text = text_.Text();
        return std::move(decoded_);
    }

  private:
    // A character outside directives.
    void TakeRaw() {
        char32_t character = kor::CodePoint(rest_.front());
        if (encoding_ == Encoding::Latin1 || !kor::TakeUtf8(rest_, character)) {
            rest_.remove_prefix(1);
        }
        text_.Add(character);
    }

    void Tell(const char* error, const char* at) {
        if (decoded_.error != nullptr) return;
        decoded_.error = error;
        decoded_.errorAt = static_cast<std::size_t>(at - encoded_.data());
    }

    void Directive() {
        if (rest_.starts_with("\\\\")) {
            text_.Add('\\');
            rest_.remove_prefix(2);
        } else if (rest_.starts_with("\\X\\") && rest_.size() >= 5 && IsHex(rest_.substr(3, 2))) {
            rest_.remove_prefix(3);
            text_.Add(TakeHex(rest_, 2));
        } else if (rest_.starts_with("\\S\\") && rest_.size() >= 4 && rest_[3] >= ' ' &&
                   rest_[3] <= '~') {
            UpperHalf(rest_[3]);
            rest_.remove_prefix(4);
        } else if (rest_.starts_with("\\P") && rest_.size() >= 4 && rest_[2] >= 'A' &&
                   rest_[2] <= 'I' && rest_[3] == '\\') {
            page_ = rest_[2];
            rest_.remove_prefix(4);
        } else if (rest_.starts_with("\\N\\") || rest_.starts_with("\\F\\")) {
            rest_.remove_prefix(3);  // for printers: a new line, a new page
        } else if (const std::size_t length = LengthOfDirective(rest_); length != 0) {
            AddDirective(rest_.substr(0, length));
            rest_.remove_prefix(length);
        } else {
            Tell("a backslash that begins no directive (a plain one is doubled)", rest_.data());
            text_.Add('\\');
            rest_.remove_prefix(1);
        }
    }

    void AddDirective(std::string_view directive) {
        const std::size_t width = WidthOfDirective(directive);
        std::string_view digits = directive.substr(kor::kDirectiveStart);
        digits.remove_suffix(kor::kDirectiveEnd.size());
        while (!digits.empty()) {
            const char* const at = digits.data();
            const char32_t codePoint = TakeCodePoint(digits, width);
            const bool isCharacter = kor::IsCharacter(codePoint);
            if (!isCharacter) {
                Tell(codePoint > kor::kLastCharacter ? "a code point beyond 10FFFF"
                                                     : "half of a surrogate pair",
                     at);
            }
            text_.Add(isCharacter ? codePoint : kor::kReplacement);
        }
    }

    // The character of the current code page 128 positions after an ASCII character.
    void UpperHalf(char c) {
        const auto code = static_cast<char32_t>(c) + 0x80;
        const auto index = static_cast<std::size_t>(code - 0xA0);
        text_.Add(page_ == 'A' || code < 0xA0 ? code : char32_t{kCodePages[page_ - 'B'][index]});
    }

    const std::string_view encoded_;
    std::string_view rest_;
    const Encoding encoding_;
    kor::TextBuilder text_;
    DecodedString decoded_;
    char page_ = 'A';
};

}  // namespace

DecodedString DecodeString(std::string_view encoded, Encoding encoding) {
    return StringDecoder(encoded, encoding).Decode();
}

}  // namespace exchange
