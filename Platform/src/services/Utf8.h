// UTF-8, and the directives of exchange files for characters beyond ISO 8859-1.

#ifndef KOR_UTF8_H
#define KOR_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

#include "KORUnicodeString.h"

namespace kor {

inline constexpr char32_t kLastNarrow = 0xFF;
inline constexpr char32_t kLastCharacter = 0x10FFFF;
inline constexpr char32_t kReplacement = 0xFFFD;  // replaces anything that is not a character

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
constexpr bool IsCharacter(char32_t c) {
    return c <= kLastCharacter && !IsHighSurrogate(c) && !IsLowSurrogate(c);
}

// The code point of an ISO 8859-1 character or of a wide character.
constexpr char32_t CodePoint(char c) { return static_cast<unsigned char>(c); }
constexpr char32_t CodePoint(char32_t c) { return c; }

// Takes a character from the front of a UTF-8 text. Returns false and takes nothing if it does not
// begin with a character.
KOR_API bool TakeUtf8(std::string_view& text, char32_t& character);

KOR_API void AppendUtf8(std::string& to, char32_t character);

// Removes all leading characters of a text, up to the first byte that is not UTF-8.
KOR_API void SkipUtf8(std::string_view& text);

KOR_API bool IsUtf8(std::string_view text);

// Exchange files (ISO 10303-21) write characters beyond ISO 8859-1 in directives: \X2\hhhh\X0\ with
// any number of characters, or \X4\hhhhhhhh\X0\ for characters beyond U+FFFF.
inline constexpr std::size_t kDirectiveStart = 4;  // \X2\ or \X4\ .
inline constexpr std::string_view kDirectiveEnd = "\\X0\\";

// The number of digits of a character in its directive.
constexpr std::size_t DirectiveWidth(char32_t character) { return character > 0xFFFF ? 8 : 4; }

// The length of a directive for a single character.
constexpr std::size_t DirectiveLength(char32_t character) {
    return kDirectiveStart + DirectiveWidth(character) + kDirectiveEnd.size();
}

// The value of an upper-case hexadecimal digit; -1 for anything else.
constexpr int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

KOR_API void AppendHex(std::string& to, char32_t value, std::size_t digits);

// Appends a directive for a single character; returns the character of such a directive, 0 for
// anything else.
KOR_API void AppendDirective(std::string& to, char32_t character);
KOR_API char32_t CharacterOfDirective(std::string_view directive);

// Builds a text character by character, with one byte each until the first character beyond ISO
// 8859-1.
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
    std::u32string wide_;  // all characters, once one of them is wide
};

}  // namespace kor

#endif
