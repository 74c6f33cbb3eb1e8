// The text of the second platform: immutable characters, shared by the copies of a text. Every
// change creates new ones. The operations are documented in the contract's header.

#ifndef KORUNICODESTRING_H
#define KORUNICODESTRING_H

#include <concepts>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "KORExport.h"

enum KORSearchMode { KORSearchForward = 1, KORSearchFirst = 2 };
enum KORStripMode { KORStripLeading = 1, KORStripTrailing = 2, KORStripBoth = 3 };

class SdaiString;

class KOR_API KORUnicodeString {
  public:
    KORUnicodeString() noexcept = default;
    KORUnicodeString(const char* text);
    explicit KORUnicodeString(std::string_view text);
    explicit KORUnicodeString(std::u32string characters);
    explicit KORUnicodeString(const SdaiString& string);

    static KORUnicodeString FromUtf8(std::string_view utf8);
    std::string ToUtf8() const;

    bool IsWide() const;
    int GetLengthInChar() const { return static_cast<int>(Characters().size()); }
    int GetLengthInByte() const { return static_cast<int>(View().size()); }

    KORUnicodeString SubString(int start, int length) const;
    int SearchSubString(const KORUnicodeString& what, int start, KORSearchMode mode) const;
    int SearchSubString(std::same_as<std::string_view> auto what, int start,
                        KORSearchMode mode) const {
        return SearchSubString(KORUnicodeString(what), start, mode);
    }
    void Strip(KORStripMode mode);

    KORUnicodeString& Append(const KORUnicodeString& text);
    KORUnicodeString& Append(std::string_view text) { return Append(KORUnicodeString(text)); }
    KORUnicodeString& Append(const char* text) { return Append(KORUnicodeString(text)); }
    KORUnicodeString& Append(const SdaiString& string);
    void Reserve(std::size_t) {}

    void BuildFromNum(int value, const char* format);
    void BuildFromNum(long value, const char* format);
    void BuildFromNum(double value, const char* format);

    int Compare(const KORUnicodeString& other) const;
    int ComparePart(long start, long length, std::string_view other) const;
    bool operator==(const char* text) const { return *this == KORUnicodeString(text); }
    bool operator!=(const char* text) const { return !(*this == text); }
    bool operator==(const KORUnicodeString& other) const {
        return Characters() == other.Characters();
    }

    const char* ConvertToChar() const { return View().data(); }
    const char* CastToCharPtr() const { return View().data(); }
    operator const char*() const { return View().data(); }
    std::string_view View() const;
    std::string_view ViewPart(long start, long length) const;

    KORUnicodeString ReadBack(std::string_view bytes) const;

    // How many times the platform has done this with a text, so that a test can verify that the
    // module leaves it to the platform.
    enum class Operation { Compare, Cut, Format, ReadNumber };
    static long Count(Operation operation);

  private:
    friend class KORLocale;
    struct Content;

    static void Note(Operation operation);

    const std::u32string& Characters() const;

    std::shared_ptr<const Content> content_;  // null if empty
};

#endif
