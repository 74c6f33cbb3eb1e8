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
    KORUnicodeString(const KORUnicodeString& other) noexcept;
    KORUnicodeString(KORUnicodeString&& other) noexcept;
    KORUnicodeString& operator=(const KORUnicodeString& other) noexcept;
    KORUnicodeString& operator=(KORUnicodeString&& other) noexcept;
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
        return Search(what, start);
    }

    // Removes blanks (the character 0x20) from the ends that the mode names.
    void Strip(KORStripMode mode);

    KORUnicodeString& Append(const KORUnicodeString& text);
    KORUnicodeString& Append(std::string_view text);
    KORUnicodeString& Append(const char* text) { return Append(std::string_view(text)); }
    KORUnicodeString& Append(const SdaiString& string);
    // Makes room for a text of that length, so that appending up to it does not allocate.
    void Reserve(std::size_t length);

    // Formats a number as printf does in the "C" locale. The format contains one conversion, of
    // integers (d i u x X o) or reals (e E f F g G), with its flags, width and precision. The text
    // becomes empty if the format is malformed, is for the other kind of number, or produces more
    // than 511 characters.
    void BuildFromNum(int value, const char* format);
    void BuildFromNum(long value, const char* format);
    void BuildFromNum(double value, const char* format);

    // Returns 2 if the texts are identical, 1 if the shorter one is a non-empty prefix of the
    // longer, else 0.
    int Compare(const KORUnicodeString& other) const {
        if (IsWide() || other.IsWide()) return CompareWide(other);
        return CompareNarrow({Narrow(), size_}, {other.Narrow(), other.size_});
    }
    // Compares SubString(start, length) with ISO 8859-1 characters, without creating a text.
    int ComparePart(int start, int length, std::string_view other) const {
        if (IsWide()) return SubString(start, length).Compare(KORUnicodeString(other));
        const auto [first, count] = Cut(start, length);
        return CompareNarrow({Narrow() + first, count}, other);
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

    // Reads back the result of a byte-for-byte conversion of this text: `bytes` are the bytes of
    // this text as `const char*`, some of them replaced. Where this text has the directive of a
    // wide character, the directive now found there is decoded; all other bytes are ISO 8859-1
    // characters.
    KORUnicodeString ReadBack(std::string_view bytes) const;

  private:
    friend class KORTextAccess;  // the in-memory model has its own buffers

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
    static void ReleaseBuffer(Buffer* buffer, Storage storage);

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
    Part Cut(int start, int length) const {
        const std::uint32_t first = start > 0 ? static_cast<std::uint32_t>(start) : 0;
        if (first >= size_ || length <= 0) return {0, 0};
        const std::uint32_t rest = size_ - first;
        const auto asked = static_cast<std::uint32_t>(length);
        return {first, asked < rest ? asked : rest};
    }
    static int CompareNarrow(std::string_view a, std::string_view b) {
        const std::size_t shorter = a.size() < b.size() ? a.size() : b.size();
        if (shorter == 0) return a.size() == b.size() ? 2 : 0;
        // Different texts nearly always differ in their first character.
        if (a.front() != b.front()) return 0;
        if (shorter > 1 && std::memcmp(a.data(), b.data(), shorter) != 0) return 0;
        return a.size() == b.size() ? 2 : 1;
    }

    void Release() {
        if (storage_ != Storage::InPlace) ReleaseBuffer(buffer_, storage_);
    }
    bool OwnsAlone(std::size_t capacity) const;
    void TakeFrom(KORUnicodeString& other) noexcept;
    void AssignLong(std::string_view text);
    void Hold(Buffer* buffer, Storage storage, std::size_t size);
    char* MakeWritable(std::size_t length);
    void SetLength(std::size_t length);
    std::size_t Grown(std::size_t length) const;
    WideBuffer* WideCopy(std::size_t capacity) const;
    template <class Char>
    void AppendWide(std::basic_string_view<Char> text);
    int Search(std::string_view what, int start) const;
    KORUnicodeString LongPart(std::size_t first, std::size_t count) const;
    int CompareWide(const KORUnicodeString& other) const;
    std::string_view ExchangeForm() const;

    std::uint32_t size_;  // in characters
    Storage storage_;
    union {
        char small_[kSmall + 1];
        Buffer* buffer_;
    };
};

#endif
