// A string value of the data access interface: a KORUnicodeString (which see: what a text is, how
// copies share it) with the operations that ISO 10303-22 bindings give to strings.

#ifndef SDAISTRING_H
#define SDAISTRING_H

#include <climits>
#include <string_view>

#include "KORUnicodeString.h"
#include "SdaiLogical.h"
#include "SdaiName.h"

class KOR_API SdaiString {
  public:
    SdaiString() = default;
    // The first `length` characters, or those up to the first NUL if they are fewer. A null pointer
    // gives an empty string.
    SdaiString(const char* text, unsigned length = UINT_MAX);
    SdaiString(const KORUnicodeString& text) : text_(text) {}
    SdaiString(KORUnicodeString&& text) noexcept : text_(static_cast<KORUnicodeString&&>(text)) {}
    explicit SdaiString(std::string_view text) : text_(text) {}

    // As those of KORUnicodeString.
    static SdaiString FromUtf8(std::string_view utf8) {
        return SdaiString(KORUnicodeString::FromUtf8(utf8));
    }
    std::string ToUtf8() const { return text_.ToUtf8(); }

    SdaiString& operator=(const char* text);
    SdaiString& operator=(const KORUnicodeString& text);

    unsigned length() const { return static_cast<unsigned>(text_.GetLengthInChar()); }

    // The characters at the positions `first` to `last`, both included and counted from 0, as far
    // as the string has them.
    SdaiString substr(unsigned first, unsigned last) const;

    // Removes the characters at the positions `first` to `last`, as far as the string has them.
    void remove(unsigned first, unsigned last);

    operator const KORUnicodeString&() const { return text_; }
    // Valid until this object is written or destroyed.
    operator const char*() const { return text_.ConvertToChar(); }
    std::string_view View() const { return text_.View(); }

  private:
    KORUnicodeString text_;
};

KOR_API SdaiString operator+(const SdaiString& left, const SdaiString& right);

// Exact comparisons, letter case included.
inline SdaiBoolean operator==(const SdaiString& left, const char* right) {
    return SdaiBoolean(static_cast<const KORUnicodeString&>(left) == right);
}
inline SdaiBoolean operator==(const SdaiString& left, const SdaiString& right) {
    return SdaiBoolean(static_cast<const KORUnicodeString&>(left) ==
                       static_cast<const KORUnicodeString&>(right));
}

inline SdaiBoolean operator!=(const SdaiString& left, const char* right) {
    return !(left == right);
}
inline SdaiBoolean operator!=(const SdaiString& left, const SdaiString& right) {
    return !(left == right);
}
inline bool operator==(const KORUnicodeString& left, const SdaiString& right) {
    return left == static_cast<const KORUnicodeString&>(right);
}

inline KORUnicodeString::KORUnicodeString(const SdaiString& string)
    : KORUnicodeString(static_cast<const KORUnicodeString&>(string)) {}

inline KORUnicodeString& KORUnicodeString::Append(const SdaiString& string) {
    return Append(static_cast<const KORUnicodeString&>(string));
}

#endif
