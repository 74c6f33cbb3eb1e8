// The platform's text. A text is a run of ISO 8859-1 characters, one byte each, so that its length
// in characters and in bytes agree; it may hold any byte, NUL included, and is followed by a NUL
// that does not count.
//
// A text is a value: a copy never changes when the original does. Up to 15 characters are held in
// the object itself; a longer text lives in a buffer that its copies share and that the last of
// them frees, so that copying a text never copies its characters. Copies may be used from several
// threads; one object may not be written by one thread while another uses it.
//
// Positions count from 0. A position or length outside the text is cut to the text: no operation
// reads or writes past it. The only failure is a lack of memory (std::bad_alloc).

#ifndef KORUNICODESTRING_H
#define KORUNICODESTRING_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "KORExport.h"

// How SearchSubString walks the text. Both modes give the first occurrence at or after the start.
enum KORSearchMode { KORSearchForward = 1, KORSearchFirst = 2 };

// Which end Strip takes blanks from.
enum KORStripMode { KORStripLeading = 1, KORStripTrailing = 2, KORStripBoth = 3 };

class SdaiString;

class KOR_API KORUnicodeString {
  public:
    KORUnicodeString() noexcept : size_(0), shared_(false), small_{} {}
    // The characters up to the first NUL; a null pointer gives an empty text.
    KORUnicodeString(const char* text);
    // Any characters, NUL among them.
    explicit KORUnicodeString(std::string_view text);
    // The text of a string; what takes a SdaiString itself stands with it, in SdaiString.h.
    explicit KORUnicodeString(const SdaiString& string);
    KORUnicodeString(const KORUnicodeString& other) noexcept;
    KORUnicodeString(KORUnicodeString&& other) noexcept;
    KORUnicodeString& operator=(const KORUnicodeString& other) noexcept;
    KORUnicodeString& operator=(KORUnicodeString&& other) noexcept;
    ~KORUnicodeString() { Release(); }

    int GetLengthInChar() const { return static_cast<int>(size_); }
    int GetLengthInByte() const { return static_cast<int>(size_); }

    // The `length` characters from `start`, as far as the text has them. A start below 0 counts as
    // 0; a length of 0 or less gives an empty text.
    KORUnicodeString SubString(int start, int length) const;

    // The position of the first occurrence of `what` at or after `start`, or -1. An empty `what`
    // is found at `start` itself.
    int SearchSubString(const KORUnicodeString& what, int start, KORSearchMode mode) const;

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
    int Compare(const KORUnicodeString& other) const;

    bool operator==(const char* text) const { return View() == std::string_view(text ? text : ""); }
    bool operator!=(const char* text) const { return !(*this == text); }
    bool operator==(const KORUnicodeString& other) const { return View() == other.View(); }

    // The characters, NUL-terminated; valid until this object is written or destroyed.
    const char* ConvertToChar() const { return Characters(); }
    const char* CastToCharPtr() const { return Characters(); }
    operator const char*() const { return Characters(); }

    // The characters without a copy, for the same time.
    std::string_view View() const { return {Characters(), size_}; }

  private:
    friend class KORTextAccess;  // the in-memory model keeps buffers of its own

    static constexpr std::size_t kSmall = 15;

    // A buffer that several texts may share; the characters and a NUL follow it.
    struct Buffer {
        std::atomic<std::uint32_t> owners;
        std::uint32_t capacity;
        char* Characters() { return reinterpret_cast<char*>(this + 1); }
    };

    static Buffer* NewBuffer(std::size_t capacity);
    static void ReleaseBuffer(Buffer* buffer);

    const char* Characters() const { return shared_ ? buffer_->Characters() : small_; }
    void Release() {
        if (shared_) ReleaseBuffer(buffer_);
    }
    void TakeFrom(KORUnicodeString& other) noexcept;
    char* MakeWritable(std::size_t length);
    void SetLength(std::size_t length);

    std::uint32_t size_;
    bool shared_;  // the characters stand in buffer_, else in small_
    union {
        char small_[kSmall + 1];
        Buffer* buffer_;
    };
};

#endif
