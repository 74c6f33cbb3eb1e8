// Values as exchange files (ISO 10303-21) write them. The functions append to a text.
//
// A string stands between apostrophes. An apostrophe and a backslash are doubled; a byte that is
// not a printable ASCII character is \X\hh. A \X2\...\X0\ or \X4\...\X0\ directive, which stands
// for characters that ISO 8859-1 lacks, is passed through as it is.

#ifndef EXCHANGETEXT_H
#define EXCHANGETEXT_H

#include <string>
#include <string_view>

#include "SdaiLogical.h"

namespace exchange {

void AppendString(std::string& to, std::string_view text);

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

// The length of a \X2\ or \X4\ directive at the start of a text; 0 when there is none.
std::size_t DirectiveLength(std::string_view text);

// ISO 8859-1 as UTF-8, directives included.
std::string ToUtf8(std::string_view text);

// Decodes what stands between the apostrophes of a string: doubled characters, directives (of all
// code pages), and raw UTF-8, which some writers put there; a byte that is neither ASCII nor UTF-8
// stays as it is, line breaks go. Characters beyond ISO 8859-1 are kept as directives. What cannot
// be decoded stays as it is; the first such place is told.
struct DecodedString {
    std::string text;
    const char* error = nullptr;  // what is wrong, null when nothing is
    std::size_t errorAt = 0;      // where, in the encoded text
};
DecodedString DecodeString(std::string_view encoded);

}  // namespace exchange

#endif
