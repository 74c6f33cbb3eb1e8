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

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>

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

// Reading. What is read stands in the text and is not copied.

// The length that stands at a position; nothing when the characters there are no number.
std::optional<long> LengthAt(std::string_view text, long position);

// The `length` characters at a position, as far as the text has them.
constexpr std::string_view TextAt(std::string_view text, long position, long length) {
    if (position < 0 || position >= std::ssize(text) || length <= 0) return {};
    return text.substr(static_cast<std::size_t>(position), static_cast<std::size_t>(length));
}

// A field read at a position, whatever its letter; a length that is no number counts as 0.
struct FieldAt {
    std::string_view value;
    long next;  // the position after it
};
FieldAt ReadField(std::string_view text, long position);

// Whether the shorter of two texts, which is not empty, begins the longer.
constexpr bool OneBeginsOther(std::string_view a, std::string_view b) {
    return !a.empty() && !b.empty() && (a.starts_with(b) || b.starts_with(a));
}

}  // namespace orx

#endif
