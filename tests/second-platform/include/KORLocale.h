// Conversion of numbers to text and back, as documented in the contract's header.

#ifndef KORLOCALE_H
#define KORLOCALE_H

#include "KORUnicodeString.h"

class KOR_API KORLocale {
  public:
    static KORUnicodeString sConvertNumToString(long value);
    static KORUnicodeString sConvertNumToString(int value) {
        return sConvertNumToString(static_cast<long>(value));
    }
    static KORUnicodeString sConvertNumToString(double value);
    static KORUnicodeString sConvertNumToString(double value, int digits, int decimals);

    static int sConvertStringToNum(const KORUnicodeString& text, long* number);
    static int sConvertStringToNum(const KORUnicodeString& text, double* number);
    static int sConvertPartToNum(const KORUnicodeString& text, long start, long length,
                                 long* number);
};

#endif
