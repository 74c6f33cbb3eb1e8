// Names of models and documents: blanks, which file names may not have, are the byte 0xB1 (the
// plus-minus sign of ISO 8859-1) in them.

#ifndef KORNAMECONVERSION_H
#define KORNAMECONVERSION_H

#include "KORExport.h"

extern "C" {

// Copies a name with every blank replaced by 0xB1. Both are NUL-terminated; the caller owns the
// output buffer, which must have room for as many characters as the name has and the NUL. The
// status becomes 0.
KOR_API void cmbflmd(const char* name, char* fileName, int* status);

// Copies a file name with every 0xB1 replaced by a blank; as above.
KOR_API void cmbrcmd(const char* fileName, char* name);
}

#endif
