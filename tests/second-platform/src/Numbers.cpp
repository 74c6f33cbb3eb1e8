// Numbers as text and back.

#include "Numbers.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "KORLocale.h"

namespace {

std::string Printed(const char* format, int precision, double value) {
    const second::PlainLocale locale;
    const int length = std::snprintf(nullptr, 0, format, precision, value);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), format, precision, value);
    text.pop_back();
    return text;
}

// The number in a text, without leading and trailing blanks and without a plus sign; empty if the
// text contains anything else. `extra` are the characters allowed besides digits and a sign.
std::string Number(const KORUnicodeString& text, const char* extra) {
    std::string number(text.View());
    number.erase(0, number.find_first_not_of(' '));
    number.erase(number.find_last_not_of(' ') + 1);
    if (number.starts_with('+') && !number.starts_with("+-")) number.erase(0, 1);
    const std::size_t first = number.starts_with('-') ? 1 : 0;
    const bool begins = first < number.size() && number.find_first_of(extra, first) != first;
    const bool isNumber =
        number.find_first_not_of(std::string("0123456789") + extra, first) == std::string::npos;
    return (begins || number.find('.') == first) && isNumber ? number : std::string();
}

// The value that a function of the C library reads from a text; fails if it stops before the end.
template <class Value>
int Read(const std::string& number, Value (*read)(const char*, char**), Value* value) {
    const second::PlainLocale locale;
    *value = 0;
    char* end = nullptr;
    errno = 0;
    const Value result = read(number.c_str(), &end);
    const bool overflows = errno == ERANGE && (result >= 1 || result <= -1);
    if (number.empty() || end != number.c_str() + number.size() || overflows) return 0;
    *value = result;
    return 1;
}

}  // namespace

KORUnicodeString KORLocale::sConvertNumToString(long value) {
    return KORUnicodeString(std::to_string(value));
}

// Adds one digit at a time until the number reads back the same; of the notations with and without
// an exponent, the shorter.
KORUnicodeString KORLocale::sConvertNumToString(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    const second::PlainLocale locale;
    int precision = 0;
    std::string scientific = Printed("%.*e", precision, value);
    while (std::strtod(scientific.c_str(), nullptr) != value) {
        scientific = Printed("%.*e", ++precision, value);
    }
    const int exponent = std::stoi(scientific.substr(scientific.find('e') + 1));
    const std::string plain = Printed("%.*f", std::max(precision - exponent, 0), value);
    return KORUnicodeString(plain.size() <= scientific.size() ? plain : scientific);
}

KORUnicodeString KORLocale::sConvertNumToString(double value, int, int decimals) {
    if (std::isnan(value)) return "nan";
    return KORUnicodeString(Printed("%.*f", std::clamp(decimals, 0, 340), value));
}

int KORLocale::sConvertStringToNum(const KORUnicodeString& text, long* number) {
    KORUnicodeString::Note(KORUnicodeString::Operation::ReadNumber);
    return Read<long>(
        Number(text, ""), [](const char* from, char** end) { return std::strtol(from, end, 10); },
        number);
}

int KORLocale::sConvertStringToNum(const KORUnicodeString& text, double* number) {
    KORUnicodeString::Note(KORUnicodeString::Operation::ReadNumber);
    return Read<double>(Number(text, ".eE+-"), std::strtod, number);
}

int KORLocale::sConvertPartToNum(const KORUnicodeString& text, long start, long length,
                                 long* number) {
    const auto position = [](long value) {
        return static_cast<int>(std::clamp<long>(value, 0, INT_MAX));
    };
    return sConvertStringToNum(text.SubString(position(start), position(length)), number);
}
