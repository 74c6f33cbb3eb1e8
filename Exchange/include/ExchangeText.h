// Values in the notation of exchange files (ISO 10303-21). The functions append to a text.
//
// A string is enclosed in apostrophes. Apostrophes and backslashes are doubled. Other characters
// that are not printable ASCII are written as directives: \X\hh below U+0100, \X2\hhhh\X0\ beyond,
// and \X4\hhhhhhhh\X0\ beyond U+FFFF.

#ifndef EXCHANGETEXT_H
#define EXCHANGETEXT_H

#include <string>
#include <string_view>

#include "KORUnicodeString.h"
#include "SdaiLogical.h"

namespace exchange {

// From ISO 8859-1, from code points, and from a text of either kind.
void AppendString(std::string& to, std::string_view text);
void AppendString(std::string& to, std::u32string_view text);
void AppendString(std::string& to, const KORUnicodeString& text);

void AppendInteger(std::string& to, long value);

// The shortest decimal digits that read back as the same real, with a point: 1. 1.5 1.E-07. A real
// that is not finite is written as nan, inf or -inf.
void AppendReal(std::string& to, double value);

// .T., .F. or .U.
void AppendLogical(std::string& to, SdaiLogical value);

// .NAME.
void AppendEnumeration(std::string& to, std::string_view name);

// "hhh"
void AppendBinary(std::string& to, std::string_view digits);

// Decodes the text between the apostrophes of a string: doubled characters, directives (of all code
// pages), and raw characters beyond ASCII, which some writers produce; line breaks are removed.
// Text that cannot be decoded is kept unchanged, and U+FFFD replaces half of a surrogate pair and
// code points beyond U+10FFFF; the first such error is reported.
struct DecodedString {
    KORUnicodeString text;
    const char* error = nullptr;  // null if there is none
    std::size_t errorAt = 0;      // its position in the encoded text
};

// The encoding of raw characters. A byte that is not UTF-8 is read as ISO 8859-1 in either.
enum class Encoding { Utf8, Latin1 };

DecodedString DecodeString(std::string_view encoded, Encoding encoding = Encoding::Utf8);

}  // namespace exchange

#endif
