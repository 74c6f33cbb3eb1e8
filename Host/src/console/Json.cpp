// Writing JSON.

#include "console/Json.h"

#include <charconv>
#include <cmath>

#include "ExchangeText.h"
#include "console/Printable.h"

namespace host {

namespace {

// \u001B; two of these for a character beyond U+FFFF.
void AppendEscape(std::string& to, char32_t code) {
    if (code > 0xFFFF) {
        AppendEscape(to, 0xD800 + ((code - 0x10000) >> 10));
        code = 0xDC00 + (code & 0x3FF);
    }
    static constexpr char kDigits[] = "0123456789ABCDEF";
    to += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) to += kDigits[code >> shift & 0xF];
}

template <class Number, class... Format>
void AppendNumber(std::string& to, Number value, Format... format) {
    char digits[64];
    to.append(digits, std::to_chars(digits, digits + sizeof digits, value, format...).ptr);
}

}  // namespace

Json& Json::Name(std::string_view name) {
    Separate();
    Quote(name);
    text_ += ':';
    return *this;
}

Json& Json::Text(std::string_view utf8) {
    Separate();
    Quote(utf8);
    return *this;
}

Json& Json::Integer(std::int64_t value) {
    Separate();
    AppendNumber(text_, value);
    return *this;
}

Json& Json::Count(std::uint64_t value) {
    Separate();
    AppendNumber(text_, value);
    return *this;
}

Json& Json::Real(double value) {
    if (!std::isfinite(value)) {
        std::string name;
        exchange::AppendReal(name, value);
        return Text(name);
    }
    Separate();
    const std::size_t start = text_.size();
    const double size = std::abs(value);
    const bool isPlain = size == 0 || (size >= 1e-5 && size < 1e15);
    AppendNumber(text_, value, isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    // Distinguishes reals from integers for a reader.
    if (text_.find_first_of(".e", start) == std::string::npos) text_ += ".0";
    return *this;
}

Json& Json::Truth(bool value) {
    Separate();
    text_ += value ? "true" : "false";
    return *this;
}

Json& Json::Null() {
    Separate();
    text_ += "null";
    return *this;
}

void Json::Separate() {
    if (!text_.empty() && std::string_view("{[:").find(text_.back()) == std::string_view::npos) {
        text_ += ',';
    }
}

void Json::Begin(char bracket) {
    Separate();
    text_ += bracket;
}

void Json::Quote(std::string_view utf8) {
    text_ += '"';
    for (std::size_t at = 0; at < utf8.size();) {
        const auto [code, length] = FirstOf(utf8.substr(at));
        if (code == Character::kNone) {
            text_ += "\uFFFD";
        } else if (code == '"' || code == '\\') {
            text_ += '\\';
            text_ += static_cast<char>(code);
        } else if (IsControl(code)) {
            AppendEscape(text_, code);
        } else {
            text_ += utf8.substr(at, length);
        }
        at += length;
    }
    text_ += '"';
}

}  // namespace host
