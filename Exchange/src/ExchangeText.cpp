#include "ExchangeText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "CodePages.h"

namespace exchange {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

bool IsHex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return HexValue(c) >= 0; });
}

// Whether a byte stands for itself in a string.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (int c = 0x20; c <= 0x7E; ++c) plain[static_cast<std::size_t>(c)] = c != '\'' && c != '\\';
    return plain;
}();

void AppendHex(std::string& to, char32_t value, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        to += kHexDigits[(value >> shift) & 0x0F];
    }
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

constexpr std::string_view kDirectiveEnd = "\\X0\\";
constexpr std::size_t kDirectiveStart = 4;  // \X2\ or \X4\ .

char32_t TakeHex(std::string_view& digits, std::size_t width) {
    char32_t value = 0;
    for (const char c : digits.substr(0, width)) {
        value = 16 * value + static_cast<char32_t>(HexValue(c));
    }
    digits.remove_prefix(width);
    return value;
}

// Takes a character from the digits of a directive. Two halves of UTF-16 make one; U+FFFD stands
// for what is no character.
char32_t TakeCharacter(std::string_view& digits, std::size_t width) {
    const char32_t value = TakeHex(digits, width);
    if (value >= 0xD800 && value <= 0xDBFF && digits.size() >= width) {
        std::string_view rest = digits;
        const char32_t low = TakeHex(rest, width);
        if (low >= 0xDC00 && low <= 0xDFFF) {
            digits = rest;
            return 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00);
        }
    }
    return value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF) ? U'\uFFFD' : value;
}

}  // namespace

std::size_t DirectiveLength(std::string_view text) {
    const std::size_t width = text.starts_with("\\X2\\") ? 4 : text.starts_with("\\X4\\") ? 8 : 0;
    if (width == 0) return 0;
    std::size_t at = kDirectiveStart;
    while (at + width <= text.size() && IsHex(text.substr(at, width))) at += width;
    const bool whole = at > kDirectiveStart && text.substr(at).starts_with(kDirectiveEnd);
    return whole ? at + kDirectiveEnd.size() : 0;
}

void AppendString(std::string& to, std::string_view text) {
    to += '\'';
    while (!text.empty()) {
        const auto plain = std::find_if_not(
            text.begin(), text.end(), [](char c) { return kPlain[static_cast<unsigned char>(c)]; });
        const auto count = static_cast<std::size_t>(plain - text.begin());
        to.append(text.substr(0, count));
        text.remove_prefix(count);
        if (text.empty()) break;
        const char c = text.front();
        const std::size_t directive = c == '\\' ? DirectiveLength(text) : 0;
        if (directive != 0) {
            to.append(text.substr(0, directive));
            text.remove_prefix(directive);
            continue;
        }
        if (c == '\'' || c == '\\') {
            to.append(2, c);
        } else {
            to += "\\X\\";
            AppendHex(to, static_cast<unsigned char>(c), 2);
        }
        text.remove_prefix(1);
    }
    to += '\'';
}

void AppendInteger(std::string& to, long value) {
    char digits[24];
    to.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void AppendReal(std::string& to, double value) {
    if (!std::isfinite(value)) {
        to += std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
        return;
    }
    char digits[32];
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    const std::string_view number(digits, static_cast<std::size_t>(end - digits));
    const std::size_t exponent = std::min(number.find('e'), number.size());
    to += number.substr(0, exponent);
    if (number.find('.') == std::string_view::npos) to += '.';
    if (exponent != number.size()) {
        to += 'E';
        to += number.substr(exponent + 1);
    }
}

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

std::string ToUtf8(std::string_view text) {
    std::string utf8;
    while (!text.empty()) {
        const std::size_t directive = DirectiveLength(text);
        if (directive == 0) {
            AppendUtf8(utf8, static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        const std::size_t width = text[2] == '2' ? 4 : 8;
        std::string_view digits =
            text.substr(kDirectiveStart, directive - kDirectiveStart - kDirectiveEnd.size());
        while (!digits.empty()) AppendUtf8(utf8, TakeCharacter(digits, width));
        text.remove_prefix(directive);
    }
    return utf8;
}

namespace {

// Takes a character from the front of a UTF-8 text; false, and nothing taken, when it does not
// begin with one.
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
    // Neither longer than needed, nor a surrogate, nor beyond the last code point.
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kLeast[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return false;
    }
    character = value;
    text.remove_prefix(length);
    return true;
}

// Builds a text of ISO 8859-1 out of characters; those beyond it that come one after the other
// share a directive.
class TextBuilder {
  public:
    void Add(char32_t character) {
        if (character <= 0xFF) {
            text_ += static_cast<char>(character);
            return;
        }
        const std::size_t width = character > 0xFFFF ? 8 : 4;
        if (directiveWidth_ == width && directiveEnd_ == text_.size()) {
            text_.resize(text_.size() - kDirectiveEnd.size());
        } else {
            text_ += width == 8 ? "\\X4\\" : "\\X2\\";
        }
        AppendHex(text_, character, static_cast<int>(width));
        text_ += kDirectiveEnd;
        directiveWidth_ = width;
        directiveEnd_ = text_.size();
    }
    void AddAsIs(std::string_view bytes) { text_ += bytes; }
    void EndDirective() { directiveWidth_ = 0; }
    std::string Take() { return std::move(text_); }

  private:
    std::string text_;
    std::size_t directiveWidth_ = 0;
    std::size_t directiveEnd_ = 0;
};

class StringDecoder {
  public:
    explicit StringDecoder(std::string_view encoded) : encoded_(encoded), rest_(encoded) {}

    DecodedString Decode() {
        while (!rest_.empty()) {
            const char c = rest_.front();
            if (c == '\\') {
                Directive();
            } else if (c == '\'') {
                // Doubled, or it would have ended the string.
                text_.Add('\'');
                rest_.remove_prefix(std::min<std::size_t>(2, rest_.size()));
            } else if (c == '\n' || c == '\r') {
                rest_.remove_prefix(1);
            } else {
                char32_t character;
                if (TakeUtf8(rest_, character)) {
                    text_.Add(character);
                } else {
                    AsIs(1);
                }
            }
        }
        decoded_.text = text_.Take();
        return std::move(decoded_);
    }

  private:
    void AsIs(std::size_t length) {
        text_.AddAsIs(rest_.substr(0, length));
        rest_.remove_prefix(length);
    }

    void Fail(const char* error, std::size_t length) {
        if (decoded_.error == nullptr) {
            decoded_.error = error;
            decoded_.errorAt = encoded_.size() - rest_.size();
        }
        AsIs(length);
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
        } else if (const std::size_t length = DirectiveLength(rest_); length != 0) {
            const std::size_t width = rest_[2] == '2' ? 4 : 8;
            std::string_view digits =
                rest_.substr(kDirectiveStart, length - kDirectiveStart - kDirectiveEnd.size());
            text_.EndDirective();
            while (!digits.empty()) text_.Add(TakeCharacter(digits, width));
            text_.EndDirective();
            rest_.remove_prefix(length);
        } else {
            Fail("a backslash that begins no directive (a plain one is doubled)", 1);
        }
    }

    // The character of the current code page that stands 128 places behind an ASCII one.
    void UpperHalf(char c) {
        const auto code = static_cast<char32_t>(c) + 0x80;
        const auto index = static_cast<std::size_t>(code - 0xA0);
        text_.Add(page_ == 'A' || code < 0xA0 ? code : char32_t{kCodePages[page_ - 'B'][index]});
    }

    const std::string_view encoded_;
    std::string_view rest_;
    TextBuilder text_;
    DecodedString decoded_;
    char page_ = 'A';
};

}  // namespace

DecodedString DecodeString(std::string_view encoded) { return StringDecoder(encoded).Decode(); }

}  // namespace exchange
