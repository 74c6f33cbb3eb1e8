// KORUnicodeString and SdaiString.

#include <locale.h>
#include <algorithm>
#include <atomic>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "KORUnicodeString.h"
#include "SdaiString.h"
#include "services/Utf8.h"

// ---- Buffers

namespace {

// A length must be an int.
void CheckLength(std::size_t length) {
    if (length > INT_MAX) throw std::bad_alloc();
}

}  // namespace

KORUnicodeString::Buffer* KORUnicodeString::NewBuffer(std::size_t capacity) {
    CheckLength(capacity);
    void* memory = ::operator new(sizeof(Buffer) + capacity + 1);
    return new (memory) Buffer{{1}, static_cast<std::uint32_t>(capacity)};
}

KORUnicodeString::WideBuffer* KORUnicodeString::NewWideBuffer(std::size_t capacity) {
    CheckLength(capacity);
    void* memory = ::operator new(sizeof(WideBuffer) + capacity * sizeof(char32_t));
    return new (memory) WideBuffer{{{1}, static_cast<std::uint32_t>(capacity)}, nullptr};
}

void KORUnicodeString::FreeBuffer(Buffer* buffer, Storage storage) {
    if (storage == Storage::Wide) delete static_cast<WideBuffer*>(buffer)->exchangeForm.load();
    ::operator delete(buffer);
}

// Holds a buffer; what the text held before is left alone.
void KORUnicodeString::SetBuffer(Buffer* buffer, Storage storage, std::size_t size) {
    buffer_ = buffer;
    storage_ = storage;
    size_ = static_cast<std::uint32_t>(size);
}

void KORUnicodeString::Hold(Buffer* buffer, Storage storage, std::size_t size) {
    Release();
    SetBuffer(buffer, storage, size);
}

void KORUnicodeString::SetLength(std::size_t length) {
    size_ = static_cast<std::uint32_t>(length);
    (storage_ == Storage::InPlace ? small_ : buffer_->Characters())[length] = '\0';
}

// The unshared characters of a narrow text, with room for `length` of them. Keeps as much of the
// current text as fits.
char* KORUnicodeString::MakeWritable(std::size_t length) {
    if (storage_ != Storage::InPlace) {
        if (OwnsAlone(length)) return buffer_->Characters();
    } else if (length <= kSmall) {
        return small_;
    }
    Buffer* buffer = NewBuffer(length);
    if (size_ != 0) {
        std::memcpy(buffer->Characters(), Narrow(), std::min<std::size_t>(size_, length));
    }
    Hold(buffer, Storage::Shared, size_);
    return buffer->Characters();
}

// ---- Construction

namespace {

void CopyWide(std::string_view characters, char32_t* to) {
    std::transform(characters.begin(), characters.end(), to,
                   [](char c) { return kor::CodePoint(c); });
}
void CopyWide(std::u32string_view characters, char32_t* to) {
    std::copy(characters.begin(), characters.end(), to);
}

bool IsNarrow(std::u32string_view characters) {
    return std::all_of(characters.begin(), characters.end(),
                       [](char32_t c) { return c <= kor::kLastNarrow; });
}

}  // namespace

// To a new text.
void KORUnicodeString::AssignLong(std::string_view text) {
    Buffer* buffer = NewBuffer(text.size());
    std::memcpy(buffer->Characters(), text.data(), text.size());
    buffer->Characters()[text.size()] = '\0';
    SetBuffer(buffer, Storage::Shared, text.size());
}

KORUnicodeString::KORUnicodeString(std::u32string_view characters) : KORUnicodeString() {
    const std::size_t size = characters.size();
    if (IsNarrow(characters)) {
        std::transform(characters.begin(), characters.end(), MakeWritable(size),
                       [](char32_t c) { return static_cast<char>(c); });
        SetLength(size);
    } else {
        WideBuffer* buffer = NewWideBuffer(size);
        std::transform(characters.begin(), characters.end(), buffer->Characters(),
                       [](char32_t c) { return kor::IsCharacter(c) ? c : kor::kReplacement; });
        Hold(buffer, Storage::Wide, size);
    }
}

// ---- Other forms

KORUnicodeString KORUnicodeString::FromUtf8(std::string_view utf8) {
    kor::TextBuilder text;
    while (!utf8.empty()) {
        char32_t character = kor::kReplacement;
        if (!kor::TakeUtf8(utf8, character)) utf8.remove_prefix(1);
        text.Add(character);
    }
    return text.Text();
}

std::string KORUnicodeString::ToUtf8() const {
    std::string utf8;
    Characters([&utf8](auto characters) {
        utf8.reserve(characters.size());
        for (const auto c : characters) kor::AppendUtf8(utf8, kor::CodePoint(c));
    });
    return utf8;
}

// For a wide text. Several threads may make the first call at once.
std::string_view KORUnicodeString::ExchangeForm() const {
    auto& kept = static_cast<WideBuffer*>(buffer_)->exchangeForm;
    const std::string* form = kept.load(std::memory_order_acquire);
    if (form != nullptr) return *form;
    auto made = std::make_unique<std::string>();
    for (const char32_t c : Wide()) {
        if (c <= kor::kLastNarrow) {
            *made += static_cast<char>(c);
        } else {
            kor::AppendDirective(*made, c);
        }
    }
    std::string* other = nullptr;
    if (!kept.compare_exchange_strong(other, made.get(), std::memory_order_acq_rel)) return *other;
    return *made.release();
}

KORUnicodeString KORUnicodeString::ReadBack(std::string_view bytes) const {
    if (!IsWide()) return KORUnicodeString(bytes);
    kor::TextBuilder text;
    const auto addBytes = [&text, &bytes](std::size_t count) {
        for (const char c : bytes.substr(0, count)) text.Add(kor::CodePoint(c));
        bytes.remove_prefix(std::min(count, bytes.size()));
    };
    for (const char32_t character : Wide()) {
        if (character <= kor::kLastNarrow) {
            addBytes(1);
            continue;
        }
        const std::size_t length = kor::DirectiveLength(character);
        const char32_t now = kor::CharacterOfDirective(bytes.substr(0, length));
        if (now == 0) {
            addBytes(length);
        } else {
            text.Add(now);
            bytes.remove_prefix(length);
        }
    }
    addBytes(bytes.size());
    return text.Text();
}

// ---- Parts of a text

KORUnicodeString KORUnicodeString::LongPart(std::size_t first, std::size_t count) const {
    if (count == size_) return *this;
    return Characters([&](auto all) { return KORUnicodeString(all.substr(first, count)); });
}

namespace {

template <class A, class B>
bool Begins(std::basic_string_view<A> text, std::basic_string_view<B> start) {
    return start.size() <= text.size() &&
           std::equal(start.begin(), start.end(), text.begin(),
                      [](B s, A t) { return kor::CodePoint(s) == kor::CodePoint(t); });
}

// The position found, or -1.
int Position(std::size_t found) {
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

// The characters left after removing blanks at these ends.
template <class Char>
std::basic_string_view<Char> Stripped(std::basic_string_view<Char> text, KORStripMode mode) {
    if ((mode & KORStripLeading) != 0) {
        text.remove_prefix(std::min(text.find_first_not_of(Char{' '}), text.size()));
    }
    if ((mode & KORStripTrailing) != 0) {
        text = text.substr(0, text.find_last_not_of(Char{' '}) + 1);
    }
    return text;
}

}  // namespace

int KORUnicodeString::SearchSubString(const KORUnicodeString& what, int start,
                                      KORSearchMode) const {
    if (!what.IsWide()) return SearchSubString(what.View(), start, KORSearchForward);
    if (!IsWide()) return -1;
    return Position(Wide().find(what.Wide(), static_cast<std::size_t>(std::max(start, 0))));
}

int KORUnicodeString::SearchWide(std::string_view what, int start) const {
    std::u32string wide(what.size(), U'\0');
    CopyWide(what, wide.data());
    return Position(Wide().find(wide, static_cast<std::size_t>(std::max(start, 0))));
}

void KORUnicodeString::Strip(KORStripMode mode) {
    Characters([this, mode](auto all) {
        const auto kept = Stripped(all, mode);
        if (kept.size() != all.size()) *this = KORUnicodeString(kept);
    });
}

// At least one of the texts is wide.
int KORUnicodeString::CompareWide(const KORUnicodeString& other) const {
    const KORUnicodeString& shorter = size_ < other.size_ ? *this : other;
    const KORUnicodeString& longer = size_ < other.size_ ? other : *this;
    const bool begins = longer.Characters([&](auto text) {
        return shorter.Characters([&](auto start) { return Begins(text, start); });
    });
    if (!begins || shorter.size_ == 0) return 0;
    return shorter.size_ == longer.size_ ? 2 : 1;
}

int KORUnicodeString::CompareWidePart(long start, long length, std::string_view other) const {
    const auto [first, count] = Cut(start, length);
    return LongPart(first, count).Compare(KORUnicodeString(other));
}

// ---- Building a text

void KORUnicodeString::Reserve(std::size_t length) {
    const std::size_t capacity = std::max<std::size_t>(length, size_);
    if (storage_ == Storage::InPlace) {
        if (capacity <= kSmall) return;
        Buffer* buffer = NewBuffer(capacity);
        std::memcpy(buffer->Characters(), small_, sizeof small_);
        SetBuffer(buffer, Storage::Shared, size_);
    } else if (IsWide()) {
        if (!OwnsAlone(capacity)) Hold(WideCopy(capacity), Storage::Wide, size_);
    } else {
        MakeWritable(capacity);
        SetLength(size_);
    }
}

// A buffer with a copy of the characters and room for `capacity` of them.
KORUnicodeString::WideBuffer* KORUnicodeString::WideCopy(std::size_t capacity) const {
    WideBuffer* buffer = NewWideBuffer(capacity);
    Characters([buffer](auto all) { CopyWide(all, buffer->Characters()); });
    return buffer;
}

// The capacity for a text of that length that is built piece by piece: 50 % more than before, so
// that it is copied only a few times.
std::size_t KORUnicodeString::Grown(std::size_t length) const {
    const std::size_t before = storage_ == Storage::InPlace ? kSmall : buffer_->capacity;
    return std::max({length, before, std::size_t{size_} + size_ / 2});
}

// Appends to a text that is wide, or whose buffer has no room or is shared.
KORUnicodeString& KORUnicodeString::AppendElsewhere(std::string_view text) {
    if (text.empty()) return *this;
    if (IsWide()) return AppendWide(text);
    const std::size_t length = size_ + text.size();
    // The piece may be part of this text: the old characters stay until the piece is copied.
    Buffer* buffer = NewBuffer(Grown(length));
    std::memcpy(buffer->Characters(), Narrow(), size_);
    std::memcpy(buffer->Characters() + size_, text.data(), text.size());
    buffer->Characters()[length] = '\0';
    Hold(buffer, Storage::Shared, length);
    return *this;
}

// Appends to a text that is or becomes wide. The piece may be part of this text.
template <class Char>
KORUnicodeString& KORUnicodeString::AppendWide(std::basic_string_view<Char> text) {
    const std::size_t length = size_ + text.size();
    if (IsWide() && OwnsAlone(length)) {
        auto* buffer = static_cast<WideBuffer*>(buffer_);
        CopyWide(text, buffer->Characters() + size_);
        delete buffer->exchangeForm.exchange(nullptr);
    } else {
        WideBuffer* buffer = WideCopy(Grown(length));
        CopyWide(text, buffer->Characters() + size_);
        Hold(buffer, Storage::Wide, size_);
    }
    size_ = static_cast<std::uint32_t>(length);
    return *this;
}

template KORUnicodeString& KORUnicodeString::AppendWide(std::u32string_view text);

namespace {

// A printf conversion: %, flags, a width, a precision and a letter.
struct Conversion {
    std::string_view flags;
    int width = 0;
    bool hasPrecision = false;
    char letter = '\0';
};

// The limit on characters written; a conversion that needs more is invalid.
constexpr int kMostCharacters = 511;

// Takes digits from the front of a text; the number is 0 if there are none. No value if it is too
// large.
std::optional<int> TakeDigits(std::string_view& text) {
    int number = 0;
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    if (count != 0) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + count, number);
        if (error != std::errc() || number > kMostCharacters) return std::nullopt;
    }
    text.remove_prefix(count);
    return number;
}

// No value if the format is malformed or its letter is not one of these.
std::optional<Conversion> ParseConversion(std::string_view format, std::string_view letters) {
    if (!format.starts_with('%')) return std::nullopt;
    format.remove_prefix(1);
    Conversion conversion;
    conversion.flags = format.substr(0, format.find_first_not_of("-+ #0"));
    format.remove_prefix(conversion.flags.size());
    const std::optional<int> width = TakeDigits(format);
    if (!width.has_value()) return std::nullopt;
    conversion.width = *width;
    conversion.hasPrecision = format.starts_with('.');
    if (conversion.hasPrecision) {
        format.remove_prefix(1);
        if (!TakeDigits(format).has_value()) return std::nullopt;
    }
    if (format.size() != 1 || letters.find(format.front()) == std::string_view::npos) {
        return std::nullopt;
    }
    conversion.letter = format.front();
    return conversion;
}

constexpr std::string_view kIntegerLetters = "diuxXo";
constexpr std::string_view kRealLetters = "eEfFgG";

// The length modifier of printf for an integer type.
std::string_view LengthModifier(int) { return ""; }
std::string_view LengthModifier(long) { return "l"; }
std::string_view LengthModifier(double) { return ""; }

// Formats a number with the most frequent conversions, decimal integers and reals in general
// notation, padded with zeros: %d, %04d, %02g.
template <class Number>
char* WriteSimply(Number value, char* to, char* end) {
    if constexpr (std::is_same_v<Number, double>) {
        return std::to_chars(to, end, value, std::chars_format::general, 6).ptr;
    } else {
        return std::to_chars(to, end, value).ptr;
    }
}

bool IsSimple(const Conversion& conversion, char letter) {
    return conversion.letter == letter && !conversion.hasPrecision &&
           (conversion.flags == "0" || (conversion.flags.empty() && conversion.width == 0));
}

template <class Number>
KORUnicodeString Print(Number value, const char* format, std::string_view letters, char simple) {
    const std::string_view whole(format != nullptr ? format : "");
    const std::optional<Conversion> conversion = ParseConversion(whole, letters);
    if (!conversion.has_value()) return {};
    char text[kMostCharacters + 1];
    if (IsSimple(*conversion, simple) && std::isfinite(static_cast<double>(value))) {
        char digits[32];
        char* end = WriteSimply(value, digits, digits + sizeof digits);
        char* first = digits;
        char* to = text;
        if (*first == '-') *to++ = *first++;
        const long zeros = conversion->width - (end - digits);
        for (long i = 0; i < zeros; ++i) *to++ = '0';
        to = std::copy(first, end, to);
        return KORUnicodeString(std::string_view(text, static_cast<std::size_t>(to - text)));
    }
    std::string modified(whole.substr(0, whole.size() - 1));
    modified.append(LengthModifier(value)).append(1, conversion->letter);
    static const locale_t kLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t before = uselocale(kLocale);
    const int length = std::snprintf(text, sizeof text, modified.c_str(), value);
    uselocale(before);
    if (length < 0 || length > kMostCharacters) return {};
    return KORUnicodeString(text);
}

}  // namespace

// A decimal integer padded with zeros to a width that is held in place; false for a width of 0, a
// number below 0, and one of more digits.
bool KORUnicodeString::BuildPadded(long value, int width) {
    if (width == 0 || value < 0) return false;
    Release();
    storage_ = Storage::InPlace;
    std::memset(small_, '0', sizeof small_);
    char* digit = small_ + width;
    for (; value != 0 && digit != small_; value /= 10)
        *--digit = static_cast<char>('0' + value % 10);
    SetLength(static_cast<std::size_t>(width));
    return value == 0;
}

void KORUnicodeString::BuildOther(int value, const char* format) {
    *this = Print(value, format, kIntegerLetters, 'd');
}

void KORUnicodeString::BuildOther(long value, const char* format) {
    *this = Print(value, format, kIntegerLetters, 'd');
}

void KORUnicodeString::BuildFromNum(double value, const char* format) {
    *this = Print(value, format, kRealLetters, 'g');
}

// ---- SdaiString

SdaiString::SdaiString(const char* text, unsigned length)
    : text_(text == nullptr ? std::string_view() : std::string_view(text, strnlen(text, length))) {}

SdaiString& SdaiString::operator=(const char* text) { return *this = SdaiString(text); }

namespace {

// A position or length as an int, which is the limit for every text.
int Clamped(unsigned value) { return static_cast<int>(std::min<unsigned>(value, INT_MAX)); }

}  // namespace

SdaiString SdaiString::substr(unsigned first, unsigned last) const {
    if (first > last || first >= length()) return {};
    return SdaiString(
        text_.SubString(Clamped(first), Clamped(std::min(last, length()) - first + 1)));
}

void SdaiString::remove(unsigned first, unsigned last) {
    if (first > last || first >= length()) return;
    KORUnicodeString kept = text_.SubString(0, Clamped(first));
    if (last < length()) kept.Append(text_.SubString(Clamped(last) + 1, INT_MAX));
    text_ = static_cast<KORUnicodeString&&>(kept);
}

SdaiString operator+(const SdaiString& left, const SdaiString& right) {
    const KORUnicodeString& start = left;
    const KORUnicodeString& end = right;
    KORUnicodeString text;
    text.Reserve(left.length() + right.length());
    text.Append(start).Append(end);
    return SdaiString(static_cast<KORUnicodeString&&>(text));
}
