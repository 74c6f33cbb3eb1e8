// Length-prefixed fields, the building blocks of encoded keys and of configuration and effectivity
// identifiers:
//
//      offset 0   1         5                 5 + L
//             +---+---------+------------------+
//             | S | L (0003)| ORX              |   next field or end
//             +---+---------+------------------+
//               |    |        L characters: the value
//               |    four decimal digits, zero-padded
//               S string, I integer, R real
//
// Fields follow each other without separators.

#ifndef ORX_FIELDS_H
#define ORX_FIELDS_H

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <optional>
#include <ostream>
#include <string_view>

#include "SdaiString.h"

namespace orx {

struct Field {
    char letter;
    const KORUnicodeString& value;
};

// Returns the fields as text, after a prefix.
SdaiString EncodeFields(std::initializer_list<Field> fields, std::string_view prefix = {});

// The sizes of a field's head (letter and length) and of its length, in characters.
inline constexpr int kFieldHead = 5;
inline constexpr int kFieldLength = 4;

// Reading. A text has fewer characters than a position outside int.

inline int PositionIn(long position) {
    return static_cast<int>(std::clamp<long>(position, INT_MIN, INT_MAX));
}

// The `length` characters at a position, or as many as SubString returns.
inline KORUnicodeString TextAt(const KORUnicodeString& text, long position, long length) {
    return text.SubString(PositionIn(position), PositionIn(length));
}

// Whether the text has these characters at a position.
inline bool IsTextAt(const KORUnicodeString& text, long position, std::string_view characters) {
    return text.ComparePart(position, static_cast<long>(characters.size()), characters) == 2;
}

// A piece of a trace line: part of a text, cut only if the line is written.
struct PartAt {
    const KORUnicodeString& text;
    long position;
    long length;

    friend std::ostream& operator<<(std::ostream& line, const PartAt& part) {
        return line << TextAt(part.text, part.position, part.length);
    }
};

// The field length at a position; no value if the characters there are not a number.
std::optional<long> LengthAt(const KORUnicodeString& text, long position);

// The field at a position, whatever its letter. A length that is not a number counts as 0.
struct FieldAt {
    FieldAt(const KORUnicodeString& key, long position)
        : text(key),
          start(position + kFieldHead),
          length(LengthAt(key, position + 1).value_or(0)) {}

    bool HasLetter(std::string_view letter) const {
        return IsTextAt(text, start - kFieldHead, letter);
    }
    KORUnicodeString Value() const { return TextAt(text, start, length); }
    // KORUnicodeString::Compare of the value, without copying it.
    int Compare(std::string_view other) const { return text.ComparePart(start, length, other); }
    long Next() const { return start + length; }  // position of the next field

    const KORUnicodeString& text;
    long start;  // of the value
    long length;
};

}  // namespace orx

#endif
