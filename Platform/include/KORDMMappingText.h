// A text as document management takes and stores it. The stand-alone platform stores texts
// unchanged, so this is the platform's text; a platform whose database stores texts in another form
// defines its own class here.

#ifndef KORDMMAPPINGTEXT_H
#define KORDMMAPPINGTEXT_H

#include "KORUnicodeString.h"

using KORDMMappingText = KORUnicodeString;

#endif
