// UTF-8, and the directives of exchange files.

#include "services/Utf8.h"

namespace kor {

bool TakeUtf8(std::string_view& text, char32_t& character) {
    if (text.empty()) return false;
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80             ? 1
                               : (first & 0xE0) == 0xC0 ? 2
                               : (first & 0xF0) == 0xE0 ? 3
                               : (first & 0xF8) == 0xF0 ? 4
                                                        : 0;
    if (length == 0 || length > text.size()) return false;
    static constexpr char32_t kFirstBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t value = first & kFirstBits[length];
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return false;
        value = (value << 6) | (next & 0x3F);
    }
    // Overlong forms are not characters either.
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kLeast[length] || !IsCharacter(value)) return false;
    character = value;
    text.remove_prefix(length);
    return true;
}

void AppendUtf8(std::string& to, char32_t c) {
    const auto byte = [&to](char32_t value) { to += static_cast<char>(value); };
    if (c < 0x80) {
        byte(c);
    } else if (c < 0x800) {
        byte(0xC0 | (c >> 6));
        byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        byte(0xE0 | (c >> 12));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    } else {
        byte(0xF0 | (c >> 18));
        byte(0x80 | ((c >> 12) & 0x3F));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    }
}

void SkipUtf8(std::string_view& text) {
    char32_t character;
    while (TakeUtf8(text, character)) {
    }
}

bool IsUtf8(std::string_view text) {
    SkipUtf8(text);
    return text.empty();
}

void AppendHex(std::string& to, char32_t value, std::size_t digits) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t left = digits; left-- > 0;) to += kDigits[value >> (4 * left) & 0x0F];
}

void AppendDirective(std::string& to, char32_t character) {
    const std::size_t width = DirectiveWidth(character);
    to += width == 8 ? "\\X4\\" : "\\X2\\";
    AppendHex(to, character, width);
    to += kDirectiveEnd;
}

char32_t CharacterOfDirective(std::string_view directive) {
    const std::size_t width = directive.starts_with("\\X2\\")   ? 4
                              : directive.starts_with("\\X4\\") ? 8
                                                                : 0;
    if (width == 0 || directive.size() < kDirectiveStart + width) return 0;
    if (directive.substr(kDirectiveStart + width) != kDirectiveEnd) return 0;
    char32_t character = 0;
    for (const char c : directive.substr(kDirectiveStart, width)) {
        if (HexValue(c) < 0) return 0;
        character = 16 * character + static_cast<char32_t>(HexValue(c));
    }
    return IsCharacter(character) ? character : 0;
}

void TextBuilder::AddWide(char32_t character) {
    if (wide_.empty()) {
        for (const char c : narrow_) wide_ += CodePoint(c);
        narrow_.clear();
    }
    wide_ += character;
}

}  // namespace kor
