// A string value of the data access interface: a KORUnicodeString (see there for what a text is and
// how copies share it) with the string operations of ISO 10303-22 language bindings.

#ifndef SDAISTRING_H
#define SDAISTRING_H

#include <climits>
#include <string>
#include <string_view>

#include "KORUnicodeString.h"
#include "SdaiLogical.h"
#include "SdaiName.h"

class KOR_API SdaiString {
  public:
    SdaiString() = default;
    // The characters up to the first NUL, but at most `length`. A null pointer makes an empty
    // string.
    SdaiString(const char* text, unsigned length = UINT_MAX);
    SdaiString(const KORUnicodeString& text) : text_(text) {}
    SdaiString(KORUnicodeString&& text) noexcept : text_(static_cast<KORUnicodeString&&>(text)) {}
    explicit SdaiString(std::string_view text) : text_(text) {}

    // As in KORUnicodeString.
    static SdaiString FromUtf8(std::string_view utf8) {
        return SdaiString(KORUnicodeString::FromUtf8(utf8));
    }
    std::string ToUtf8() const { return text_.ToUtf8(); }

    SdaiString& operator=(const char* text);
    SdaiString& operator=(const KORUnicodeString& text) {
        text_ = text;
        return *this;
    }
    SdaiString& operator=(KORUnicodeString&& text) noexcept {
        text_ = static_cast<KORUnicodeString&&>(text);
        return *this;
    }

    unsigned length() const { return static_cast<unsigned>(text_.GetLengthInChar()); }

    // The characters from position `first` to `last` inclusive, counted from 0, clipped to the
    // string.
    SdaiString substr(unsigned first, unsigned last) const;

    // Removes the characters from position `first` to `last` inclusive, clipped to the string.
    void remove(unsigned first, unsigned last);

    operator const KORUnicodeString&() const { return text_; }
    // Valid until this object is modified or destroyed.
    operator const char*() const { return text_.ConvertToChar(); }
    std::string_view View() const { return text_.View(); }

  private:
    KORUnicodeString text_;
};

KOR_API SdaiString operator+(const SdaiString& left, const SdaiString& right);

// Exact, case-sensitive comparisons.
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
