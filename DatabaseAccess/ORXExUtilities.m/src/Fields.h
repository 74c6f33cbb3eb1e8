// Length-prefixed fields, of which encoded keys and the identifiers of configurations and
// effectivities are made:
//
//      offset 0   1         5                 5 + L
//             +---+---------+------------------+
//             | S | L (0003)| ORX              |   next field or end
//             +---+---------+------------------+
//               |    |        L characters: the value
//               |    four decimal digits, zero-padded
//               S string, I integer, R real
//
// Fields stand end to end, without separators.

#ifndef ORX_FIELDS_H
#define ORX_FIELDS_H

#include <initializer_list>
#include <optional>
#include <string_view>

#include "KORUnicodeString.h"
#include "SdaiString.h"

namespace orx {

struct Field {
    char letter;
    std::string_view value;
};

// A text of these fields, behind a prefix.
SdaiString EncodeFields(std::initializer_list<Field> fields, std::string_view prefix = {});

// The length of the field's length and letter, and of its length alone.
inline constexpr long kFieldHead = 5;
inline constexpr long kFieldLength = 4;

// The length that stands at a position; nothing when the characters there are no number.
std::optional<long> LengthAt(const KORUnicodeString& text, long position);

// The `length` characters at a position, as far as the text has them.
KORUnicodeString TextAt(const KORUnicodeString& text, long position, long length);

// A field read at a position, whatever its letter; a length that is no number counts as 0.
struct FieldAt {
    KORUnicodeString value;
    long next;  // the position after it
};
FieldAt ReadField(const KORUnicodeString& text, long position);

}  // namespace orx

#endif
