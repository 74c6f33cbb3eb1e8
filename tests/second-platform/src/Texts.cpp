// Texts: every operation works on characters as code points and makes a new text.

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstdio>

#include "KORUnicodeString.h"
#include "Numbers.h"
#include "SdaiString.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastNarrow = 0xFF;

bool IsCharacter(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

std::u32string Widened(std::string_view bytes) {
    std::u32string characters;
    for (const char byte : bytes) characters += static_cast<unsigned char>(byte);
    return characters;
}

// A character beyond ISO 8859-1 as in exchange files.
std::string Directive(char32_t character) {
    char text[24];
    const char* format = character > 0xFFFF ? "\\X4\\%08X\\X0\\" : "\\X2\\%04X\\X0\\";
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(character));
    return text;
}

std::array<std::atomic<long>, 4> counts{};

}  // namespace

// ---- Creating texts

struct KORUnicodeString::Content {
    explicit Content(std::u32string from) : characters(std::move(from)) {
        for (const char32_t c : characters) {
            bytes += c <= kLastNarrow ? std::string(1, static_cast<char>(c)) : Directive(c);
        }
    }

    std::u32string characters;
    std::string bytes;  // the text as `const char*`
};

KORUnicodeString::KORUnicodeString(std::u32string characters) {
    for (char32_t& c : characters) {
        if (!IsCharacter(c)) c = kReplacement;
    }
    if (!characters.empty()) content_ = std::make_shared<const Content>(std::move(characters));
}

KORUnicodeString::KORUnicodeString(std::string_view text) : KORUnicodeString(Widened(text)) {}

KORUnicodeString::KORUnicodeString(const char* text)
    : KORUnicodeString(std::string_view(text != nullptr ? text : "")) {}

const std::u32string& KORUnicodeString::Characters() const {
    static const std::u32string& none = *new std::u32string;
    return content_ != nullptr ? content_->characters : none;
}

std::string_view KORUnicodeString::View() const {
    return content_ != nullptr ? std::string_view(content_->bytes) : std::string_view("");
}

bool KORUnicodeString::IsWide() const {
    const std::u32string& all = Characters();
    return std::any_of(all.begin(), all.end(), [](char32_t c) { return c > kLastNarrow; });
}

KORUnicodeString KORUnicodeString::FromUtf8(std::string_view utf8) {
    // The smallest character for each length: a longer form of a smaller one is malformed.
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    std::u32string characters;
    while (!utf8.empty()) {
        const auto first = static_cast<unsigned char>(utf8.front());
        const std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
        char32_t character = length == 1 ? first : first & (0xFFU >> (length + 1));
        bool good = length <= utf8.size() && (first < 0x80 || first >= 0xC0) && first < 0xF8;
        for (std::size_t i = 1; good && i < length; ++i) {
            const auto next = static_cast<unsigned char>(utf8[i]);
            good = (next & 0xC0) == 0x80;
            character = character << 6 | (next & 0x3F);
        }
        good = good && character >= kLeast[length] && IsCharacter(character);
        characters += good ? character : kReplacement;
        utf8.remove_prefix(good ? length : 1);
    }
    return KORUnicodeString(std::move(characters));
}

std::string KORUnicodeString::ToUtf8() const {
    std::string utf8;
    for (const char32_t c : Characters()) {
        const int following = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        const unsigned marks[] = {0, 0xC0, 0xE0, 0xF0};
        utf8 += static_cast<char>(marks[following] | c >> (6 * following));
        for (int i = following; i-- > 0;) utf8 += static_cast<char>(0x80 | (c >> (6 * i) & 0x3F));
    }
    return utf8;
}

// A directive of one character that was written by ConvertToChar and modified since may have become
// invalid; its bytes are then read as characters.
KORUnicodeString KORUnicodeString::ReadBack(std::string_view bytes) const {
    std::u32string read;
    for (const char32_t c : Characters()) {
        const std::string_view piece = bytes.substr(0, c <= kLastNarrow ? 1 : Directive(c).size());
        bytes.remove_prefix(piece.size());
        char32_t now = 0;
        if (c > kLastNarrow && piece.size() > 8) {
            const std::string digits(piece.substr(4, piece.size() - 8));
            const bool isNumber = digits.find_first_not_of("0123456789ABCDEF") == std::string::npos;
            if (isNumber) now = static_cast<char32_t>(std::stoul(digits, nullptr, 16));
            // Only the directive that the character would have.
            if (Directive(now) != piece) now = 0;
        }
        read += now != 0 && IsCharacter(now) ? std::u32string(1, now) : Widened(piece);
    }
    return KORUnicodeString(read + Widened(bytes));
}

// ---- Parts

KORUnicodeString KORUnicodeString::SubString(int start, int length) const {
    Note(Operation::Cut);
    const auto first = static_cast<std::size_t>(std::max(start, 0));
    if (length <= 0 || first >= Characters().size()) return {};
    return KORUnicodeString(Characters().substr(first, static_cast<std::size_t>(length)));
}

std::string_view KORUnicodeString::ViewPart(long start, long length) const {
    Note(Operation::Cut);
    const auto first = static_cast<std::size_t>(std::max(start, 0L));
    if (length <= 0 || first >= View().size()) return "";
    return View().substr(first, static_cast<std::size_t>(length));
}

int KORUnicodeString::SearchSubString(const KORUnicodeString& what, int start,
                                      KORSearchMode) const {
    const auto found =
        Characters().find(what.Characters(), static_cast<std::size_t>(std::max(start, 0)));
    return found == std::u32string::npos ? -1 : static_cast<int>(found);
}

void KORUnicodeString::Strip(KORStripMode mode) {
    std::u32string kept = Characters();
    while ((mode & KORStripLeading) != 0 && kept.starts_with(U' ')) kept.erase(0, 1);
    while ((mode & KORStripTrailing) != 0 && kept.ends_with(U' ')) kept.pop_back();
    *this = KORUnicodeString(std::move(kept));
}

KORUnicodeString& KORUnicodeString::Append(const KORUnicodeString& text) {
    return *this = KORUnicodeString(Characters() + text.Characters());
}

int KORUnicodeString::Compare(const KORUnicodeString& other) const {
    Note(Operation::Compare);
    const std::u32string& mine = Characters();
    const std::u32string& others = other.Characters();
    if (mine == others) return 2;
    const bool begins =
        !mine.empty() && !others.empty() && (mine.starts_with(others) || others.starts_with(mine));
    return begins ? 1 : 0;
}

int KORUnicodeString::ComparePart(long start, long length, std::string_view other) const {
    const auto position = [](long value) {
        return static_cast<int>(std::clamp<long>(value, 0, INT_MAX));
    };
    return SubString(position(start), position(length)).Compare(KORUnicodeString(other));
}

void KORUnicodeString::Note(Operation operation) { ++counts[static_cast<std::size_t>(operation)]; }

long KORUnicodeString::Count(Operation operation) {
    return counts[static_cast<std::size_t>(operation)];
}

// ---- Numbers

namespace {

// Prints with a format of one conversion of one of these letters; empty for any other, or if the
// result is too long.
KORUnicodeString Print(const char* format, const char* letters, const char* modifier, auto number) {
    constexpr int kMost = 511;
    std::string text = format != nullptr ? format : "";
    if (!text.starts_with('%')) return {};
    // Flags, a width, a precision and one letter.
    std::size_t at = std::min(text.find_first_not_of("-+ #0", 1), text.size());
    for (const bool precision : {false, true}) {
        if (precision && text.compare(at, 1, ".") != 0) break;
        const std::size_t first = precision ? at + 1 : at;
        at = std::min(text.find_first_not_of("0123456789", first), text.size());
        const std::string digits = text.substr(first, at - first);
        if (digits.size() > 3 || (!digits.empty() && std::stoi(digits) > kMost)) return {};
    }
    if (at + 1 != text.size() || std::string_view(letters).find(text[at]) == std::string::npos) {
        return {};
    }
    text.insert(text.size() - 1, modifier);
    const second::PlainLocale locale;
    char result[kMost + 1];
    const int length = std::snprintf(result, sizeof result, text.c_str(), number);
    return length <= kMost ? KORUnicodeString(result) : KORUnicodeString();
}

}  // namespace

void KORUnicodeString::BuildFromNum(int value, const char* format) {
    Note(Operation::Format);
    *this = Print(format, "diuxXo", "", value);
}
void KORUnicodeString::BuildFromNum(long value, const char* format) {
    Note(Operation::Format);
    *this = Print(format, "diuxXo", "l", value);
}
void KORUnicodeString::BuildFromNum(double value, const char* format) {
    Note(Operation::Format);
    *this = Print(format, "eEfFgG", "", value);
}

// ---- SdaiString, whose header is the contract's own

SdaiString::SdaiString(const char* text, unsigned length) {
    std::string characters;
    for (; text != nullptr && *text != '\0' && characters.size() < length; ++text) {
        characters += *text;
    }
    text_ = KORUnicodeString(characters);
}

SdaiString& SdaiString::operator=(const char* text) { return *this = SdaiString(text); }

namespace {

int Position(unsigned value) { return static_cast<int>(std::min<unsigned>(value, INT_MAX)); }

}  // namespace

// The contract counts positions unsigned and includes the last.
SdaiString SdaiString::substr(unsigned first, unsigned last) const {
    if (first > last || first >= length()) return {};
    return SdaiString(
        text_.SubString(Position(first), Position(std::min(last, length()) - first + 1)));
}

void SdaiString::remove(unsigned first, unsigned last) {
    if (first > last) return;
    KORUnicodeString kept = text_.SubString(0, Position(first));
    if (last < length()) kept.Append(text_.SubString(Position(last) + 1, INT_MAX));
    text_ = kept;
}

SdaiString operator+(const SdaiString& left, const SdaiString& right) {
    KORUnicodeString text = left;
    text.Append(static_cast<const KORUnicodeString&>(right));
    return SdaiString(text);
}
