// Conversion of numbers to text and back, in the "C" locale regardless of the process's locale.

#ifndef KORLOCALE_H
#define KORLOCALE_H

#include "KORUnicodeString.h"

class KOR_API KORLocale {
  public:
    // Plain decimal digits, without padding.
    static KORUnicodeString sConvertNumToString(long value);
    static KORUnicodeString sConvertNumToString(int value) {
        return sConvertNumToString(static_cast<long>(value));
    }

    // The shortest decimal digits that read back as the same real; "nan", "inf" or "-inf" if it is
    // not finite.
    static KORUnicodeString sConvertNumToString(double value);

    // Writes exactly `decimals` digits after the point, and no point for 0. The caller promises at
    // most `digits` digits before the point; this is not enforced.
    static KORUnicodeString sConvertNumToString(double value, int digits, int decimals);

    // Reads a number. The whole text must be a number; blanks around it are ignored. Returns 1 and
    // sets the number; for any other text, including a number out of range, returns 0 and sets the
    // number to 0.
    static int sConvertStringToNum(const KORUnicodeString& text, long* number);
    static int sConvertStringToNum(const KORUnicodeString& text, double* number);
};

#endif
