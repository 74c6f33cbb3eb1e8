// KORUnicodeString and SdaiString.

#include <locale.h>
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include "KORUnicodeString.h"
#include "SdaiString.h"

// ---- Buffers

KORUnicodeString::Buffer* KORUnicodeString::NewBuffer(std::size_t capacity) {
    if (capacity > INT_MAX) throw std::bad_alloc();  // a length would be no int
    void* memory = ::operator new(sizeof(Buffer) + capacity + 1);
    return new (memory) Buffer{{1}, static_cast<std::uint32_t>(capacity)};
}

void KORUnicodeString::ReleaseBuffer(Buffer* buffer) {
    if (buffer->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        buffer->~Buffer();
        ::operator delete(buffer);
    }
}

void KORUnicodeString::SetLength(std::size_t length) {
    size_ = static_cast<std::uint32_t>(length);
    (shared_ ? buffer_->Characters() : small_)[length] = '\0';
}

// Where the characters stand, with room for `length` of them, none of them shared. What fits of the
// text so far is kept.
char* KORUnicodeString::MakeWritable(std::size_t length) {
    if (shared_) {
        if (buffer_->owners.load(std::memory_order_acquire) == 1 && buffer_->capacity >= length) {
            return buffer_->Characters();
        }
    } else if (length <= kSmall) {
        return small_;
    }
    Buffer* buffer = NewBuffer(length);
    std::memcpy(buffer->Characters(), Characters(), std::min<std::size_t>(size_, length));
    Release();
    buffer_ = buffer;
    shared_ = true;
    return buffer->Characters();
}

// ---- Construction

KORUnicodeString::KORUnicodeString(const char* text)
    : KORUnicodeString(std::string_view(text != nullptr ? text : "")) {}

KORUnicodeString::KORUnicodeString(std::string_view text) : KORUnicodeString() {
    if (text.empty()) return;
    std::memcpy(MakeWritable(text.size()), text.data(), text.size());
    SetLength(text.size());
}

KORUnicodeString::KORUnicodeString(const KORUnicodeString& other) noexcept
    : size_(other.size_), shared_(other.shared_) {
    if (shared_) {
        buffer_ = other.buffer_;
        buffer_->owners.fetch_add(1, std::memory_order_relaxed);
    } else {
        std::memcpy(small_, other.small_, sizeof small_);
    }
}

KORUnicodeString::KORUnicodeString(KORUnicodeString&& other) noexcept { TakeFrom(other); }

KORUnicodeString& KORUnicodeString::operator=(const KORUnicodeString& other) noexcept {
    return *this = KORUnicodeString(other);
}

KORUnicodeString& KORUnicodeString::operator=(KORUnicodeString&& other) noexcept {
    if (this != &other) {
        Release();
        TakeFrom(other);
    }
    return *this;
}

void KORUnicodeString::TakeFrom(KORUnicodeString& other) noexcept {
    size_ = other.size_;
    shared_ = other.shared_;
    if (shared_) {
        buffer_ = other.buffer_;
    } else {
        std::memcpy(small_, other.small_, sizeof small_);
    }
    other.size_ = 0;
    other.shared_ = false;
    other.small_[0] = '\0';
}

// ---- Parts of a text

KORUnicodeString KORUnicodeString::SubString(int start, int length) const {
    const auto first = static_cast<std::size_t>(std::max(start, 0));
    if (first >= size_ || length <= 0) return {};
    if (first == 0 && static_cast<std::size_t>(length) >= size_) return *this;
    return KORUnicodeString(View().substr(first, static_cast<std::size_t>(length)));
}

int KORUnicodeString::SearchSubString(const KORUnicodeString& what, int start,
                                      KORSearchMode) const {
    const auto position = View().find(what.View(), static_cast<std::size_t>(std::max(start, 0)));
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

void KORUnicodeString::Strip(KORStripMode mode) {
    std::string_view kept = View();
    if ((mode & KORStripLeading) != 0) {
        kept.remove_prefix(std::min(kept.find_first_not_of(' '), kept.size()));
    }
    if ((mode & KORStripTrailing) != 0) {
        kept = kept.substr(0, kept.find_last_not_of(' ') + 1);
    }
    if (kept.size() != size_) *this = KORUnicodeString(kept);
}

int KORUnicodeString::Compare(const KORUnicodeString& other) const {
    const std::string_view a = View();
    const std::string_view b = other.View();
    if (a == b) return 2;
    const std::string_view& shorter = a.size() < b.size() ? a : b;
    const std::string_view& longer = a.size() < b.size() ? b : a;
    return !shorter.empty() && longer.starts_with(shorter) ? 1 : 0;
}

// ---- Building a text

void KORUnicodeString::Reserve(std::size_t length) {
    MakeWritable(std::max<std::size_t>(length, size_));
    SetLength(size_);
}

KORUnicodeString& KORUnicodeString::Append(const KORUnicodeString& text) {
    return Append(text.View());
}

KORUnicodeString& KORUnicodeString::Append(std::string_view text) {
    if (text.empty()) return *this;
    const std::size_t length = size_ + text.size();
    if (!shared_ && length <= kSmall) {
        std::memmove(small_ + size_, text.data(), text.size());
    } else if (shared_ && buffer_->owners.load(std::memory_order_acquire) == 1 &&
               buffer_->capacity >= length) {
        std::memmove(buffer_->Characters() + size_, text.data(), text.size());
    } else {
        // Half as much again, so that a text built piece by piece is copied a few times only. The
        // piece may be part of this text: the old characters stay until the piece is copied.
        KORUnicodeString grown;
        char* characters = grown.MakeWritable(std::max<std::size_t>(length, size_ + size_ / 2));
        std::memcpy(characters, Characters(), size_);
        std::memcpy(characters + size_, text.data(), text.size());
        *this = static_cast<KORUnicodeString&&>(grown);
    }
    SetLength(length);
    return *this;
}

namespace {

// Writes the number with a format that is one printf conversion, whose last character is one of the
// letters; the length modifier (of an integer, "l") is put before it.
template <class Number>
KORUnicodeString Print(Number value, const char* format, std::string_view letters,
                       std::string_view lengthModifier) {
    std::string conversion(format != nullptr ? format : "");
    const std::size_t letter = conversion.find_first_not_of("-+ #0123456789.", 1);
    if (!conversion.starts_with('%') || letter != conversion.size() - 1 ||
        letters.find(conversion.back()) == std::string_view::npos) {
        return {};
    }
    conversion.insert(letter, lengthModifier);
    static const locale_t kLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t before = uselocale(kLocale);
    char text[512];
    const int length = std::snprintf(text, sizeof text, conversion.c_str(), value);
    uselocale(before);
    if (length < 0 || length >= static_cast<int>(sizeof text)) return {};
    return KORUnicodeString(text);
}

}  // namespace

void KORUnicodeString::BuildFromNum(int value, const char* format) {
    BuildFromNum(static_cast<long>(value), format);
}

void KORUnicodeString::BuildFromNum(long value, const char* format) {
    *this = Print(value, format, "diuxXo", "l");
}

void KORUnicodeString::BuildFromNum(double value, const char* format) {
    *this = Print(value, format, "eEfFgG", "");
}

// ---- SdaiString

SdaiString::SdaiString(const char* text, unsigned length)
    : text_(text == nullptr ? std::string_view() : std::string_view(text, strnlen(text, length))) {}

SdaiString& SdaiString::operator=(const char* text) { return *this = SdaiString(text); }

SdaiString& SdaiString::operator=(const KORUnicodeString& text) {
    text_ = text;
    return *this;
}

SdaiString SdaiString::substr(unsigned first, unsigned last) const {
    if (first > last || first >= length()) return {};
    return SdaiString(View().substr(first, std::size_t{last} - first + 1));
}

void SdaiString::remove(unsigned first, unsigned last) {
    if (first > last || first >= length()) return;
    const std::string_view all = View();
    KORUnicodeString kept(all.substr(0, first));
    if (last < all.size()) kept.Append(all.substr(std::size_t{last} + 1));
    text_ = static_cast<KORUnicodeString&&>(kept);
}

SdaiString operator+(const SdaiString& left, const SdaiString& right) {
    KORUnicodeString text;
    text.Reserve(left.View().size() + right.View().size());
    text.Append(left.View()).Append(right.View());
    return SdaiString(static_cast<KORUnicodeString&&>(text));
}
