// Names of models and documents: file names must not contain blanks, so they contain the byte 0xB1
// (the plus-minus sign of ISO 8859-1) instead.

#ifndef KORNAMECONVERSION_H
#define KORNAMECONVERSION_H

#include "KORExport.h"

extern "C" {

// Copies a name, replacing every blank with 0xB1. Both are NUL-terminated. The caller owns the
// output buffer, which must have room for the name and its NUL. Sets the status to 0.
KOR_API void cmbflmd(const char* name, char* fileName, int* status);

// Copies a file name, replacing every 0xB1 with a blank; otherwise as above.
KOR_API void cmbrcmd(const char* fileName, char* name);
}

#endif
