// The platform's text: a sequence of Unicode characters (U+0000 to U+10FFFF, without surrogates).
// Lengths and positions count characters; positions start at 0.
//
// A text whose characters are all below U+0100, as nearly all are, is stored as ISO 8859-1, one
// byte per character, and its `const char*` is the same. A text with any other character is wide.
// Its `const char*` is in the form of exchange files (ISO 10303-21): each character beyond ISO
// 8859-1 is a directive (\X2\0141\X0\ for U+0141, \X4\0001F600\X0\ for U+1F600), all others are one
// byte. Such directives are not decoded in input: use FromUtf8 to make wide texts. A text may
// contain any character, including NUL, and is followed by a NUL that is not part of it.
//
// A text is a value: a copy does not change with the original. Up to 15 characters below U+0100 are
// stored in the object itself; any other text is in a buffer that its copies share and the last of
// them frees, so copying a text never allocates. Copies may be used on several threads; no thread
// may write an object while another uses it.
//
// Positions and lengths are clipped to the text: no operation reads or writes outside it. The only
// failure is running out of memory (std::bad_alloc), which is also possible when reading the `const
// char*` of a wide text.

#ifndef KORUNICODESTRING_H
#define KORUNICODESTRING_H

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "KORExport.h"

// The direction of SearchSubString. Both modes find the first occurrence at or after the start.
enum KORSearchMode { KORSearchForward = 1, KORSearchFirst = 2 };

// The ends from which Strip removes blanks.
enum KORStripMode { KORStripLeading = 1, KORStripTrailing = 2, KORStripBoth = 3 };

class SdaiString;

class KOR_API KORUnicodeString {
  public:
    KORUnicodeString() noexcept : size_(0), storage_(Storage::InPlace), small_{} {}
    // ISO 8859-1 characters up to the first NUL; empty if the pointer is null.
    KORUnicodeString(const char* text)
        : KORUnicodeString(std::string_view(text != nullptr ? text : "")) {}
    // ISO 8859-1 characters, including NUL.
    explicit KORUnicodeString(std::string_view text) : KORUnicodeString() {
        if (text.size() <= kSmall) {
            CopySmall(small_, text.data(), text.size());
            size_ = static_cast<std::uint32_t>(text.size());
        } else {
            AssignLong(text);
        }
    }
    // Characters by code point; U+FFFD replaces surrogates and values beyond U+10FFFF.
    explicit KORUnicodeString(std::u32string_view characters);
    // The text of a string. Functions that take a SdaiString are defined in SdaiString.h.
    explicit KORUnicodeString(const SdaiString& string);
    KORUnicodeString(const KORUnicodeString& other) noexcept
        : size_(other.size_), storage_(other.storage_) {
        std::memcpy(small_, other.small_, sizeof small_);
        if (storage_ != Storage::InPlace) {
            buffer_->owners.fetch_add(1, std::memory_order_relaxed);
        }
    }
    KORUnicodeString(KORUnicodeString&& other) noexcept { TakeFrom(other); }
    KORUnicodeString& operator=(const KORUnicodeString& other) noexcept {
        return *this = KORUnicodeString(other);
    }
    KORUnicodeString& operator=(KORUnicodeString&& other) noexcept {
        if (this != &other) {
            Release();
            TakeFrom(other);
        }
        return *this;
    }
    ~KORUnicodeString() { Release(); }

    // U+FFFD replaces each byte that is not part of a well-formed character (this includes overlong
    // forms, surrogates and code points beyond U+10FFFF).
    static KORUnicodeString FromUtf8(std::string_view utf8);
    std::string ToUtf8() const;

    // Whether the text contains a character beyond U+00FF.
    bool IsWide() const { return storage_ == Storage::Wide; }

    int GetLengthInChar() const { return static_cast<int>(size_); }
    // The length of the text as `const char*`.
    int GetLengthInByte() const { return static_cast<int>(View().size()); }

    // Up to `length` characters from `start`. A start below 0 counts as 0; a length of 0 or less
    // yields an empty text.
    KORUnicodeString SubString(int start, int length) const {
        const auto [first, count] = Cut(start, length);
        if (count > kSmall || IsWide()) return LongPart(first, count);
        KORUnicodeString part;
        CopySmall(part.small_, Narrow() + first, count);
        part.size_ = count;
        return part;
    }

    // The position of the first occurrence of `what` at or after `start`, or -1 if there is none.
    // An empty `what` is found at `start`.
    int SearchSubString(const KORUnicodeString& what, int start, KORSearchMode mode) const;
    // The same for ISO 8859-1 characters that are not a KORUnicodeString.
    int SearchSubString(std::same_as<std::string_view> auto what, int start, KORSearchMode) const {
        if (IsWide()) return SearchWide(what, start);
        const std::size_t from = start > 0 ? static_cast<std::size_t>(start) : 0;
        const std::size_t found = std::string_view(Narrow(), size_).find(what, from);
        return found == std::string_view::npos ? -1 : static_cast<int>(found);
    }

    // Removes blanks (the character 0x20) from the ends that the mode names.
    void Strip(KORStripMode mode);

    KORUnicodeString& Append(const KORUnicodeString& text) {
        return text.IsWide() ? AppendWide(text.Wide())
                             : Append(std::string_view(text.Narrow(), text.size_));
    }
    KORUnicodeString& Append(std::string_view text) {
        const std::size_t length = size_ + text.size();
        const bool hasRoom =
            storage_ == Storage::InPlace ? length <= kSmall : !IsWide() && OwnsAlone(length);
        if (!hasRoom) return AppendElsewhere(text);
        char* end = (storage_ == Storage::InPlace ? small_ : buffer_->Characters()) + size_;
        if (text.size() <= kSmall) {
            CopySmall(end, text.data(), text.size());
        } else {
            std::memcpy(end, text.data(), text.size());
        }
        end[text.size()] = '\0';
        size_ = static_cast<std::uint32_t>(length);
        return *this;
    }
    KORUnicodeString& Append(const char* text) { return Append(std::string_view(text)); }
    KORUnicodeString& Append(const SdaiString& string);
    // Makes room for a text of that length, so that appending up to it does not allocate.
    void Reserve(std::size_t length);

    // The number as printf would write it in the "C" locale. The format holds one conversion, of
    // integers (d i u x X o) or of reals (e E f F g G), with its flags, width and precision. A
    // format of another shape or for the other kind of number, or one that asks for more than 511
    // characters, gives an empty text.
    void BuildFromNum(int value, const char* format) {
        if (!BuildPadded(value, PaddedWidth(format))) BuildOther(value, format);
    }
    void BuildFromNum(long value, const char* format) {
        if (!BuildPadded(value, PaddedWidth(format))) BuildOther(value, format);
    }
    void BuildFromNum(double value, const char* format);

    // Returns 2 if the texts are identical, 1 if the shorter one is a non-empty prefix of the
    // longer, else 0.
    int Compare(const KORUnicodeString& other) const {
        if (IsWide() || other.IsWide()) return CompareWide(other);
        return CompareNarrow({Narrow(), size_}, {other.Narrow(), other.size_});
    }
    // Compare of SubString(start, length) with characters of ISO 8859-1; makes a text of neither.
    int ComparePart(long start, long length, std::string_view other) const {
        if (IsWide()) return CompareWidePart(start, length, other);
        return CompareNarrow(ViewPart(start, length), other);
    }

    // Exact comparisons. A wide text differs from every ISO 8859-1 text, including its own form as
    // `const char*`.
    bool operator==(const char* text) const {
        return !IsWide() && View() == std::string_view(text ? text : "");
    }
    bool operator!=(const char* text) const { return !(*this == text); }
    bool operator==(const KORUnicodeString& other) const {
        return IsWide() || other.IsWide() ? CompareWide(other) == 2 : View() == other.View();
    }

    // The text as `const char*`, NUL-terminated; valid until this object is modified or destroyed.
    const char* ConvertToChar() const { return View().data(); }
    const char* CastToCharPtr() const { return View().data(); }
    operator const char*() const { return View().data(); }

    // The same with its length, including any NULs; valid for the same time.
    std::string_view View() const {
        if (IsWide()) return ExchangeForm();
        return {Narrow(), size_};
    }

    // The View of SubString(start, length), of a text that is not wide.
    std::string_view ViewPart(long start, long length) const {
        const auto [first, count] = Cut(start, length);
        return {Narrow() + first, count};
    }

    // The text that results when a conversion has changed single bytes of this one: `bytes` are
    // those of this text as `const char*`, each unchanged or replaced. In the place of a directive
    // of this text, the directive that is there now is decoded; all other bytes are characters of
    // ISO 8859-1.
    KORUnicodeString ReadBack(std::string_view bytes) const;

  private:
    friend class kor::TextAccess;

    static constexpr std::size_t kSmall = 15;

    // Where the characters are stored: in the object, in a buffer as ISO 8859-1, or in a
    // WideBuffer.
    enum class Storage : std::uint8_t { InPlace, Shared, Wide };

    // A buffer that several texts may share, followed by the characters and a NUL.
    struct Buffer {
        std::atomic<std::uint32_t> owners;
        std::uint32_t capacity;
        char* Characters() { return reinterpret_cast<char*>(this + 1); }
    };
    // The same for a wide text, followed by the characters as code points. Their exchange form is
    // created on first use.
    struct WideBuffer : Buffer {
        std::atomic<std::string*> exchangeForm;
        char32_t* Characters() { return reinterpret_cast<char32_t*>(this + 1); }
    };

    static Buffer* NewBuffer(std::size_t capacity);
    static WideBuffer* NewWideBuffer(std::size_t capacity);
    static void ReleaseBuffer(Buffer* buffer, Storage storage) {
        if (buffer->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            FreeBuffer(buffer, storage);
    }
    static void FreeBuffer(Buffer* buffer, Storage storage);

    // The characters of a narrow and of a wide text.
    const char* Narrow() const {
        return storage_ == Storage::InPlace ? small_ : buffer_->Characters();
    }
    std::u32string_view Wide() const {
        return {static_cast<WideBuffer*>(buffer_)->Characters(), size_};
    }
    // Calls visit with the characters as a std::string_view or a std::u32string_view.
    template <class Visit>
    decltype(auto) Characters(Visit visit) const {
        return IsWide() ? visit(Wide()) : visit(std::string_view(Narrow(), size_));
    }

    // Copies up to 15 characters, in at most two overlapping pieces.
    static void CopySmall(char* to, const char* from, std::size_t count) {
        const auto copyEnds = [=](auto piece) {
            std::memcpy(&piece, from, sizeof piece);
            auto last = piece;
            std::memcpy(&last, from + count - sizeof last, sizeof last);
            std::memcpy(to, &piece, sizeof piece);
            std::memcpy(to + count - sizeof last, &last, sizeof last);
        };
        if (count >= 8) {
            copyEnds(std::uint64_t{});
        } else if (count >= 4) {
            copyEnds(std::uint32_t{});
        } else if (count >= 2) {
            copyEnds(std::uint16_t{});
        } else if (count == 1) {
            *to = *from;
        }
    }
    // The part given by a start and a length, clipped to the text.
    struct Part {
        std::uint32_t first;
        std::uint32_t count;
    };
    Part Cut(long start, long length) const {
        const long first = start > 0 ? start : 0;
        const long rest = static_cast<long>(size_) - first;
        if (rest <= 0 || length <= 0) return {0, 0};
        return {static_cast<std::uint32_t>(first),
                static_cast<std::uint32_t>(length < rest ? length : rest)};
    }
    static int CompareNarrow(std::string_view a, std::string_view b) {
        const std::size_t shorter = a.size() < b.size() ? a.size() : b.size();
        if (shorter == 0) return a.size() == b.size() ? 2 : 0;
        // Different texts nearly always differ in their first character.
        if (a.front() != b.front()) return 0;
        // A length that is known where this is compiled needs no call.
        if (a.size() == b.size()) return std::memcmp(a.data(), b.data(), b.size()) == 0 ? 2 : 0;
        return shorter == 1 || std::memcmp(a.data(), b.data(), shorter) == 0 ? 1 : 0;
    }

    void Release() {
        if (storage_ != Storage::InPlace) ReleaseBuffer(buffer_, storage_);
    }
    // Whether the buffer of the text, which is not in place, is shared with no other text and has
    // room for that many characters.
    bool OwnsAlone(std::size_t capacity) const {
        return buffer_->owners.load(std::memory_order_acquire) == 1 &&
               buffer_->capacity >= capacity;
    }
    void TakeFrom(KORUnicodeString& other) noexcept {
        size_ = other.size_;
        storage_ = other.storage_;
        std::memcpy(small_, other.small_, sizeof small_);
        other.size_ = 0;
        other.storage_ = Storage::InPlace;
        other.small_[0] = '\0';
    }
    void AssignLong(std::string_view text);
    void Hold(Buffer* buffer, Storage storage, std::size_t size);
    char* MakeWritable(std::size_t length);
    void SetLength(std::size_t length);
    void SetBuffer(Buffer* buffer, Storage storage, std::size_t size);
    std::size_t Grown(std::size_t length) const;
    WideBuffer* WideCopy(std::size_t capacity) const;
    KORUnicodeString& AppendElsewhere(std::string_view text);
    template <class Char>
    KORUnicodeString& AppendWide(std::basic_string_view<Char> text);
    // The width of a format that pads decimals with zeros, as %04d; 0 for any other.
    static constexpr int PaddedWidth(const char* format) {
        if (format == nullptr || format[0] != '%' || format[1] != '0') return 0;
        if (format[2] < '1' || format[2] > '9' || format[3] != 'd' || format[4] != '\0') return 0;
        return format[2] - '0';
    }
    bool BuildPadded(long value, int width);
    void BuildOther(int value, const char* format);
    void BuildOther(long value, const char* format);
    int SearchWide(std::string_view what, int start) const;
    KORUnicodeString LongPart(std::size_t first, std::size_t count) const;
    int CompareWide(const KORUnicodeString& other) const;
    int CompareWidePart(long start, long length, std::string_view other) const;
    std::string_view ExchangeForm() const;

    std::uint32_t size_;  // in characters
    Storage storage_;
    union {
        char small_[kSmall + 1];  // larger than a pointer: its copy copies either
        Buffer* buffer_;
    };
};

#endif
