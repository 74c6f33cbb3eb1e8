// Values as exchange files (ISO 10303-21) write them. The functions append to a text.
//
// A string stands between apostrophes. An apostrophe and a backslash are doubled; a character below
// U+0100 that is not printable ASCII is \X\hh, and those beyond stand in \X2\...\X0\ directives, or
// \X4\...\X0\ beyond U+FFFF.

#ifndef EXCHANGETEXT_H
#define EXCHANGETEXT_H

#include <string>
#include <string_view>

#include "KORUnicodeString.h"
#include "SdaiLogical.h"

namespace exchange {

// ISO 8859-1; code points; and a text of either kind.
void AppendString(std::string& to, std::string_view text);
void AppendString(std::string& to, std::u32string_view text);
void AppendString(std::string& to, const KORUnicodeString& text);

void AppendInteger(std::string& to, long value);

// The shortest decimals that read back as the same real, with a point: 1. 1.5 1.E-07. One that is
// not finite gives nan, inf or -inf.
void AppendReal(std::string& to, double value);

// .T., .F. or .U.
void AppendLogical(std::string& to, SdaiLogical value);

// .NAME.
void AppendEnumeration(std::string& to, std::string_view name);

// "hhh"
void AppendBinary(std::string& to, std::string_view digits);

// Decodes what stands between the apostrophes of a string: doubled characters, directives (of all
// code pages), and raw characters beyond ASCII, which some writers put there; line breaks go. What
// cannot be decoded stays as it is, and U+FFFD stands for half of a surrogate pair and a code point
// beyond U+10FFFF; the first such place is told.
struct DecodedString {
    KORUnicodeString text;
    const char* error = nullptr;  // what is wrong, null when nothing is
    std::size_t errorAt = 0;      // where, in the encoded text
};

// How the raw characters are written. A byte that is no UTF-8 is ISO 8859-1 in either.
enum class Encoding { Utf8, Latin1 };

DecodedString DecodeString(std::string_view encoded, Encoding encoding = Encoding::Utf8);

}  // namespace exchange

#endif
