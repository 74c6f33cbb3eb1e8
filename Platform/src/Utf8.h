// UTF-8, and the directives of exchange files for the characters that ISO 8859-1 lacks.

#ifndef KOR_UTF8_H
#define KOR_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

#include "KORUnicodeString.h"

namespace kor {

inline constexpr char32_t kLastNarrow = 0xFF;
inline constexpr char32_t kLastCharacter = 0x10FFFF;
inline constexpr char32_t kReplacement = 0xFFFD;  // stands for what is no character

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
constexpr bool IsCharacter(char32_t c) {
    return c <= kLastCharacter && !IsHighSurrogate(c) && !IsLowSurrogate(c);
}

// The code point of a character of ISO 8859-1, or of one that is wide already.
constexpr char32_t CodePoint(char c) { return static_cast<unsigned char>(c); }
constexpr char32_t CodePoint(char32_t c) { return c; }

// Takes a character from the front of a UTF-8 text; false, and nothing taken, when it does not
// begin with one.
KOR_API bool TakeUtf8(std::string_view& text, char32_t& character);

KOR_API void AppendUtf8(std::string& to, char32_t character);

// Takes all characters from the front of a text, up to what is no UTF-8.
KOR_API void SkipUtf8(std::string_view& text);

KOR_API bool IsUtf8(std::string_view text);

// Exchange files (ISO 10303-21) write characters beyond ISO 8859-1 in directives: \X2\hhhh\X0\, any
// number of them between \X2\ and \X0\, or \X4\hhhhhhhh\X0\ for those beyond U+FFFF.
inline constexpr std::size_t kDirectiveStart = 4;  // \X2\ or \X4\ .
inline constexpr std::string_view kDirectiveEnd = "\\X0\\";

// The digits that the character takes in its directive.
constexpr std::size_t DirectiveWidth(char32_t character) { return character > 0xFFFF ? 8 : 4; }

// The length of a directive that holds the one character.
constexpr std::size_t DirectiveLength(char32_t character) {
    return kDirectiveStart + DirectiveWidth(character) + kDirectiveEnd.size();
}

// The value of an upper-case hexadecimal digit; -1 for anything else.
constexpr int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

KOR_API void AppendHex(std::string& to, char32_t value, std::size_t digits);

// A directive that holds the one character; and the character of one, 0 for anything else.
KOR_API void AppendDirective(std::string& to, char32_t character);
KOR_API char32_t CharacterOfDirective(std::string_view directive);

// A text that is built character by character. It takes one byte for each until one comes that
// ISO 8859-1 lacks.
class TextBuilder {
  public:
    void Add(char32_t character) {
        if (wide_.empty() && character <= kLastNarrow) {
            narrow_ += static_cast<char>(character);
        } else {
            AddWide(character);
        }
    }
    KORUnicodeString Text() const {
        return wide_.empty() ? KORUnicodeString(std::string_view(narrow_))
                             : KORUnicodeString(std::u32string_view(wide_));
    }

  private:
    KOR_API void AddWide(char32_t character);

    std::string narrow_;
    std::u32string wide_;  // all characters, as soon as one is wide
};

}  // namespace kor

#endif
