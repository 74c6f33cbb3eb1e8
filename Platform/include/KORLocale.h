// Conversion of numbers to text and back, in the "C" locale regardless of the process's locale.

#ifndef KORLOCALE_H
#define KORLOCALE_H

#include <string_view>

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

    // Reads a number. The whole text must be one, blanks around it apart. Gives 1 and the number;
    // for anything else, a number out of range included, 0 and the number 0.
    static int sConvertStringToNum(const KORUnicodeString& text, long* number) {
        return sConvertPartToNum(text, 0, text.GetLengthInChar(), number);
    }
    static int sConvertStringToNum(const KORUnicodeString& text, double* number);
    // Reads text.SubString(start, length), and makes no text of it.
    static int sConvertPartToNum(const KORUnicodeString& text, long start, long length,
                                 long* number) {
        if (text.IsWide()) return ConvertWidePart(text, start, length, number);
        const std::string_view part = text.ViewPart(start, length);
        // Nearly always a few digits.
        constexpr std::size_t kSurelyInRange = 18;
        if (part.empty() || part.size() > kSurelyInRange) return ConvertOther(part, number);
        long value = 0;
        for (const char c : part) {
            if (c < '0' || c > '9') return ConvertOther(part, number);
            value = 10 * value + (c - '0');
        }
        *number = value;
        return 1;
    }

  private:
    static int ConvertWidePart(const KORUnicodeString& text, long start, long length, long* number);
    static int ConvertOther(std::string_view text, long* number);
};

#endif
