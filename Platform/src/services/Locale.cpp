// Conversion of numbers to text and back.

#include "KORLocale.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <string_view>
#include <system_error>

namespace {

KORUnicodeString Shortest(auto value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return KORUnicodeString(std::string_view(text, static_cast<std::size_t>(end - text)));
}

// Reads a number, with an optional sign and blanks around it, that must be the whole text.
template <class Number>
int ReadNumber(std::string_view text, Number& number) {
    number = 0;
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return 0;
    text = text.substr(first, text.find_last_not_of(' ') - first + 1);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return 0;
    }
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return 0;
    number = value;
    return 1;
}

}  // namespace

KORUnicodeString KORLocale::sConvertNumToString(long value) { return Shortest(value); }

KORUnicodeString KORLocale::sConvertNumToString(double value) {
    // A NaN is written without its sign.
    return std::isnan(value) ? KORUnicodeString("nan") : Shortest(value);
}

KORUnicodeString KORLocale::sConvertNumToString(double value, int, int decimals) {
    if (std::isnan(value)) return "nan";
    // The largest real has 309 digits before the point.
    constexpr int kMostDecimals = 340;
    char text[1 + 309 + 1 + kMostDecimals];
    const int precision = decimals < 0 ? 0 : decimals < kMostDecimals ? decimals : kMostDecimals;
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, precision).ptr;
    return KORUnicodeString(std::string_view(text, static_cast<std::size_t>(end - text)));
}

// A part of a wide text may be narrow itself.
int KORLocale::ConvertWidePart(const KORUnicodeString& text, long start, long length,
                               long* number) {
    const KORUnicodeString part =
        text.SubString(static_cast<int>(std::clamp<long>(start, 0, INT_MAX)),
                       static_cast<int>(std::clamp<long>(length, 0, INT_MAX)));
    *number = 0;
    return part.IsWide() ? 0 : ConvertOther(part.View(), number);
}

int KORLocale::ConvertOther(std::string_view text, long* number) {
    return ReadNumber(text, *number);
}

int KORLocale::sConvertStringToNum(const KORUnicodeString& text, double* number) {
    double value = 0.0;
    const int success = text.IsWide() ? 0 : ReadNumber(text.View(), value);
    // "inf" and "nan" do not count as numbers.
    *number = success == 1 && std::isfinite(value) ? value : 0.0;
    return success == 1 && std::isfinite(value) ? 1 : 0;
}
