// Numbers to text and back, in the "C" locale whatever the process has set.

#ifndef KORLOCALE_H
#define KORLOCALE_H

#include "KORUnicodeString.h"

class KOR_API KORLocale {
  public:
    // Plain decimals, without padding.
    static KORUnicodeString sConvertNumToString(long value);
    static KORUnicodeString sConvertNumToString(int value) {
        return sConvertNumToString(static_cast<long>(value));
    }

    // The shortest decimals that read back as the same real; "nan", "inf" or "-inf" for one that is
    // not finite.
    static KORUnicodeString sConvertNumToString(double value);

    // At most `digits` significant digits before the point are promised by the caller and not
    // enforced; the text has exactly `decimals` digits after the point, and no point for 0.
    static KORUnicodeString sConvertNumToString(double value, int digits, int decimals);

    // Reads a number. The whole text must be one, blanks around it apart. Gives 1 and the number;
    // for anything else, a number out of range included, 0 and the number 0.
    static int sConvertStringToNum(const KORUnicodeString& text, long* number);
    static int sConvertStringToNum(const KORUnicodeString& text, double* number);
};

#endif
