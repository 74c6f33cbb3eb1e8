// The platform's text: a run of Unicode characters (U+0000 to U+10FFFF, surrogates apart). Lengths
// and positions count characters, positions from 0.
//
// A text whose characters all lie below U+0100, as nearly every text's do, is held as ISO 8859-1,
// one byte a character, and what is given or taken as `const char*` is that. A text with a
// character beyond is wide. As `const char*` it is in the form of exchange files (ISO 10303-21):
// each character beyond ISO 8859-1 stands in a directive of its own (\X2\0141\X0\ for U+0141,
// \X4\0001F600\X0\ for U+1F600), all others are one byte. That form is never decoded when it is
// taken: FromUtf8 makes wide texts. A text may hold any character, NUL included, and is followed by
// a NUL that does not count.
//
// A text is a value: a copy never changes when the original does. Up to 15 characters below U+0100
// are held in the object itself; any other text lives in a buffer that its copies share and that
// the last of them frees, so that copying a text never copies its characters. Copies may be used
// from several threads; one object may not be written by one thread while another uses it.
//
// A position or length outside the text is cut to the text: no operation reads or writes past it.
// The only failure is a lack of memory (std::bad_alloc), in reading the `const char*` of a wide
// text too.

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

// How SearchSubString walks the text. Both modes give the first occurrence at or after the start.
enum KORSearchMode { KORSearchForward = 1, KORSearchFirst = 2 };

// Which end Strip takes blanks from.
enum KORStripMode { KORStripLeading = 1, KORStripTrailing = 2, KORStripBoth = 3 };

class SdaiString;

class KOR_API KORUnicodeString {
  public:
    KORUnicodeString() noexcept : size_(0), storage_(Storage::InPlace), small_{} {}
    // The characters of ISO 8859-1 up to the first NUL; a null pointer gives an empty text.
    KORUnicodeString(const char* text)
        : KORUnicodeString(std::string_view(text != nullptr ? text : "")) {}
    // Any characters of ISO 8859-1, NUL among them.
    explicit KORUnicodeString(std::string_view text) : KORUnicodeString() {
        if (text.size() <= kSmall) {
            CopySmall(small_, text.data(), text.size());
            size_ = static_cast<std::uint32_t>(text.size());
        } else {
            AssignLong(text);
        }
    }
    // Characters by their code points; U+FFFD for each that is a surrogate or beyond U+10FFFF.
    explicit KORUnicodeString(std::u32string_view characters);
    // The text of a string; what takes a SdaiString itself stands with it, in SdaiString.h.
    explicit KORUnicodeString(const SdaiString& string);
    KORUnicodeString(const KORUnicodeString& other) noexcept;
    KORUnicodeString(KORUnicodeString&& other) noexcept;
    KORUnicodeString& operator=(const KORUnicodeString& other) noexcept;
    KORUnicodeString& operator=(KORUnicodeString&& other) noexcept;
    ~KORUnicodeString() { Release(); }

    // U+FFFD stands for each byte that is no part of a well-formed character (of an overlong form,
    // a surrogate, or a code point beyond U+10FFFF).
    static KORUnicodeString FromUtf8(std::string_view utf8);
    std::string ToUtf8() const;

    // Whether a character lies beyond U+00FF.
    bool IsWide() const { return storage_ == Storage::Wide; }

    int GetLengthInChar() const { return static_cast<int>(size_); }
    // Of the text as `const char*`.
    int GetLengthInByte() const { return static_cast<int>(View().size()); }

    // The `length` characters from `start`, as far as the text has them. A start below 0 counts as
    // 0; a length of 0 or less gives an empty text.
    KORUnicodeString SubString(int start, int length) const {
        const auto [first, count] = Cut(start, length);
        if (count > kSmall || IsWide()) return LongPart(first, count);
        KORUnicodeString part;
        CopySmall(part.small_, Narrow() + first, count);
        part.size_ = count;
        return part;
    }

    // The position of the first occurrence of `what` at or after `start`, or -1. An empty `what`
    // is found at `start` itself.
    int SearchSubString(const KORUnicodeString& what, int start, KORSearchMode mode) const;
    // The same for characters of ISO 8859-1 that are no text of their own.
    int SearchSubString(std::same_as<std::string_view> auto what, int start, KORSearchMode) const {
        return Search(what, start);
    }

    // Takes blanks (the character 0x20) from the ends that the mode names.
    void Strip(KORStripMode mode);

    KORUnicodeString& Append(const KORUnicodeString& text);
    KORUnicodeString& Append(std::string_view text);
    KORUnicodeString& Append(const char* text) { return Append(std::string_view(text)); }
    KORUnicodeString& Append(const SdaiString& string);
    // Makes room for a text of that length, so that appending up to it allocates no more.
    void Reserve(std::size_t length);

    // The number as printf would write it in the "C" locale. The format holds one conversion, of
    // integers (d i u x X o) or of reals (e E f F g G), with its flags, width and precision. A
    // format of another shape or for the other kind of number, or one that asks for more than 511
    // characters, gives an empty text.
    void BuildFromNum(int value, const char* format);
    void BuildFromNum(long value, const char* format);
    void BuildFromNum(double value, const char* format);

    // 2 when the texts are identical, 1 when the shorter one is not empty and begins the longer,
    // else 0.
    int Compare(const KORUnicodeString& other) const {
        if (IsWide() || other.IsWide()) return CompareWide(other);
        return CompareNarrow({Narrow(), size_}, {other.Narrow(), other.size_});
    }
    // Compare of SubString(start, length) with characters of ISO 8859-1; makes a text of neither.
    int ComparePart(int start, int length, std::string_view other) const {
        if (IsWide()) return SubString(start, length).Compare(KORUnicodeString(other));
        const auto [first, count] = Cut(start, length);
        return CompareNarrow({Narrow() + first, count}, other);
    }

    // Exact comparisons. A wide text differs from every text of ISO 8859-1, its own form as
    // `const char*` included.
    bool operator==(const char* text) const {
        return !IsWide() && View() == std::string_view(text ? text : "");
    }
    bool operator!=(const char* text) const { return !(*this == text); }
    bool operator==(const KORUnicodeString& other) const {
        return IsWide() || other.IsWide() ? CompareWide(other) == 2 : View() == other.View();
    }

    // The text as `const char*`, NUL-terminated; valid until this object is written or destroyed.
    const char* ConvertToChar() const { return View().data(); }
    const char* CastToCharPtr() const { return View().data(); }
    operator const char*() const { return View().data(); }

    // The same with its length, NULs included, for the same time.
    std::string_view View() const {
        if (IsWide()) return ExchangeForm();
        return {Narrow(), size_};
    }

    // The text that a conversion of single bytes made of this one: `bytes` are those of this text
    // as `const char*`, each as it was or another. Where a wide character of this text has its
    // directive, the directive that stands there now is read back; all other bytes are characters
    // of ISO 8859-1.
    KORUnicodeString ReadBack(std::string_view bytes) const;

  private:
    friend class KORTextAccess;  // the in-memory model keeps buffers of its own

    static constexpr std::size_t kSmall = 15;

    // Where the characters stand: in the object, in a buffer as ISO 8859-1, or in a WideBuffer.
    enum class Storage : std::uint8_t { InPlace, Shared, Wide };

    // A buffer that several texts may share; the characters and a NUL follow it.
    struct Buffer {
        std::atomic<std::uint32_t> owners;
        std::uint32_t capacity;
        char* Characters() { return reinterpret_cast<char*>(this + 1); }
    };
    // The same for a wide text; its characters follow it as code points, and their exchange form is
    // made when it is first asked for.
    struct WideBuffer : Buffer {
        std::atomic<std::string*> exchangeForm;
        char32_t* Characters() { return reinterpret_cast<char32_t*>(this + 1); }
    };

    static Buffer* NewBuffer(std::size_t capacity);
    static WideBuffer* NewWideBuffer(std::size_t capacity);
    static void ReleaseBuffer(Buffer* buffer, Storage storage);

    // The characters of a text that is not wide, and of one that is.
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
    // The part that a start and a length name, as far as the text has it.
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
        // Texts that differ nearly always do so at once.
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
