// UTF-8 texts to be shown, made safe for terminals.

#include "console/Printable.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <iterator>

namespace host {

Character FirstOf(std::string_view utf8) {
    const auto byte = [utf8](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return {first, 1};
    constexpr Character kNoCharacter{Character::kNone, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || utf8.size() < length) return kNoCharacter;
    char32_t code = first & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return kNoCharacter;
        code = code << 6 | (byte(i) & 0x3F);
    }
    // Not overlong, not half of a surrogate pair, not beyond the last code point.
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kLeast[length] || (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF) {
        return kNoCharacter;
    }
    return {code, length};
}

std::size_t Characters(std::string_view utf8) {
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), BeginsCharacter));
}

std::string Shortened(std::string_view utf8, std::size_t most) {
    if (Characters(utf8) <= most) return std::string(utf8);
    std::size_t end = 0;
    for (std::size_t count = 0; count < most; ++end) {
        if (end + 1 == utf8.size() || BeginsCharacter(utf8[end + 1])) ++count;
    }
    return std::string(utf8.substr(0, end)) + "…";
}

bool IsControl(char32_t code) {
    static constexpr struct {
        char32_t first;
        char32_t last;
    } kRanges[] = {
        {0x00, 0x1F},
        {0x7F, 0x9F},
        {0x61C, 0x61C},
        {0x200E, 0x200F},
        {0x2028, 0x202E},
        {0x2060, 0x206F},
        {0xFEFF, 0xFEFF},
        {0xFFF9, 0xFFFB},
        {0xFFFE, 0xFFFF},
        {0xE0000, 0xE007F},
        {0x110000, Character::kNone},
    };
    return std::any_of(std::begin(kRanges), std::end(kRanges), [code](const auto& range) {
        return range.first <= code && code <= range.last;
    });
}

std::string Printable(std::string_view utf8) {
    std::string printable;
    WritePrintable(utf8, [&printable](std::string_view piece) { printable += piece; });
    return printable;
}

std::size_t DisplayWidth(std::string_view utf8) {
    // Whatever the locale of the user: texts are UTF-8.
    static const locale_t kLocale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = kLocale != nullptr ? uselocale(kLocale) : nullptr;
    std::size_t width = 0;
    while (!utf8.empty()) {
        const Character character = FirstOf(utf8);
        const int columns = kLocale != nullptr && !IsControl(character.code)
                                ? wcwidth(static_cast<wchar_t>(character.code))
                                : 1;
        width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
        utf8.remove_prefix(character.length);
    }
    if (kLocale != nullptr) uselocale(before);
    return width;
}

}  // namespace host
