// Conversion of names of models and documents.

#include "KORNameConversion.h"

namespace {

constexpr char kFileBlank = '\xB1';

void CopyReplacing(const char* from, char* to, char what, char with) {
    do {
        *to++ = *from == what ? with : *from;
    } while (*from++ != '\0');
}

}  // namespace

void cmbflmd(const char* name, char* fileName, int* status) {
    CopyReplacing(name, fileName, ' ', kFileBlank);
    *status = 0;
}

void cmbrcmd(const char* fileName, char* name) { CopyReplacing(fileName, name, kFileBlank, ' '); }
