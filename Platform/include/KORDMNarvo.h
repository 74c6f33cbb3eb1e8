// Document management: identifiers and revision values.

#ifndef KORDMNARVO_H
#define KORDMNARVO_H

#include "KORDMMappingText.h"
#include "KORExport.h"
#include "KORUnicodeString.h"

class KOR_API KORDMNarvo {
  public:
    // The value of a hexadecimal text, in either letter case; 0 for any other text, including an
    // empty one.
    static double HexaToDouble(const KORUnicodeString& text);

    // The first revision value of a new object. Selector 1 selects the revision; for any other, the
    // result is empty. The texts (environment, table, type) and the status are reserved; a status
    // that is not null is set to 0.
    static KORUnicodeString GetRevVerStartValue(int selector, const KORDMMappingText& caenv,
                                                const KORDMMappingText& catab,
                                                const KORDMMappingText& type, int* status);

    // Sets the result of GetRevVerStartValue(1, ...), which is "A" until then.
    static void SetRevVerStartValue(const KORUnicodeString& value);
};

#endif
