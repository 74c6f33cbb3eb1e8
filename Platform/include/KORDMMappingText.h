// A text as document management takes and keeps it. The stand-alone platform keeps texts as they
// are, so it is the platform's text itself; a platform whose database stores texts in another form
// puts its own class here.

#ifndef KORDMMAPPINGTEXT_H
#define KORDMMAPPINGTEXT_H

#include "KORUnicodeString.h"

using KORDMMappingText = KORUnicodeString;

#endif
