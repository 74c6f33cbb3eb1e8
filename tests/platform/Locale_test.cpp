// Conversion of numbers to text and back in any locale of the process.

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "KORLocale.h"

using namespace std::string_view_literals;

namespace {

std::string Written(long value) {
    return std::string(KORLocale::sConvertNumToString(value).View());
}
std::string Written(double value) {
    return std::string(KORLocale::sConvertNumToString(value).View());
}
std::string Written(double value, int digits, int decimals) {
    return std::string(KORLocale::sConvertNumToString(value, digits, decimals).View());
}

struct Integer {
    int status;
    long number;
    bool operator==(const Integer&) const = default;
};
Integer ReadInteger(std::string_view text) {
    long number = 99;
    const int status = KORLocale::sConvertStringToNum(KORUnicodeString(text), &number);
    return {status, number};
}

struct Real {
    int status;
    double number;
    bool operator==(const Real&) const = default;
};
Real ReadReal(std::string_view text) {
    double number = 99.5;
    const int status = KORLocale::sConvertStringToNum(KORUnicodeString(text), &number);
    return {status, number};
}

// Sets a locale with a decimal comma, while it exists.
class CommaLocale {
  public:
    CommaLocale() {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8",
                                 "fr_FR", "es_ES.UTF-8", "it_IT.UTF-8", "nl_NL.UTF-8"}) {
            if (std::setlocale(LC_ALL, name) != nullptr &&
                *std::localeconv()->decimal_point == ',') {
                installed_ = true;
                return;
            }
        }
    }
    ~CommaLocale() { std::setlocale(LC_ALL, "C"); }

    bool Installed() const { return installed_; }

  private:
    bool installed_ = false;
};

}  // namespace

TEST(NumToString, WritesIntegersAsPlainDecimals) {
    EXPECT_EQ(Written(0L), "0");
    EXPECT_EQ(Written(7L), "7");
    EXPECT_EQ(Written(-12L), "-12");
    EXPECT_EQ(Written(1234567L), "1234567");
    EXPECT_EQ(Written(LONG_MAX), "9223372036854775807");
    EXPECT_EQ(Written(LONG_MIN), "-9223372036854775808");
}

TEST(NumToString, WritesRealsWithTheFewestDigitsThatReadBackTheSame) {
    EXPECT_EQ(Written(1.5), "1.5");
    EXPECT_EQ(Written(0.1), "0.1");
    EXPECT_EQ(Written(-2.25), "-2.25");
    EXPECT_EQ(Written(3.0), "3");
    EXPECT_EQ(Written(0.0), "0");
    EXPECT_EQ(Written(1.0 / 3.0), "0.3333333333333333");
}

TEST(NumToString, WritesRealsThatReadBackTheSame) {
    for (const double value :
         {1e-300, 1e300, 123456789.123, 5e-324, std::numeric_limits<double>::max(),
          std::nextafter(1.0, 2.0), -0.1 - 0.2, 100'000.0, 1e15, 1e16, 1e22}) {
        const std::string text = Written(value);
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
        EXPECT_EQ(text.find(' '), std::string::npos) << text;
    }
}

TEST(NumToString, NamesRealsThatAreNotFinite) {
    EXPECT_EQ(Written(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(Written(-std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(Written(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(Written(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(NumToString, WritesTheDecimalsThatAreAskedFor) {
    EXPECT_EQ(Written(3.0, 6, 0), "3");
    EXPECT_EQ(Written(-3.0, 6, 0), "-3");
    EXPECT_EQ(Written(3.2, 6, 0), "3");
    EXPECT_EQ(Written(3.7, 6, 0), "4");
    EXPECT_EQ(Written(3.0, 6, 2), "3.00");
    EXPECT_EQ(Written(3.14159, 6, 2), "3.14");
    EXPECT_EQ(Written(-1.5, 6, 1), "-1.5");
    EXPECT_EQ(Written(0.001, 6, 4), "0.0010");
    // The caller promises the number of digits before the point; it is not a limit.
    EXPECT_EQ(Written(1234567.0, 6, 0), "1234567");
    EXPECT_EQ(Written(12.0, 1, 1), "12.0");
    EXPECT_EQ(Written(1e22, 6, 0), "10000000000000000000000");
}

TEST(StringToNum, ReadsIntegers) {
    const struct {
        std::string_view text;
        long expected;
    } cases[] = {
        {"0", 0},
        {"12", 12},
        {"-12", -12},
        {"0012", 12},
        {"-0", 0},
        {" 12", 12},
        {"12 ", 12},
        {"   -12   ", -12},
        {"9223372036854775807", LONG_MAX},
        {"-9223372036854775808", LONG_MIN},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(ReadInteger(text), (Integer{1, expected})) << "'" << text << "'";
    }
}

TEST(StringToNum, RefusesWhatIsNoIntegerAndLeaves0) {
    for (const std::string_view text : {""sv,
                                        " "sv,
                                        "    "sv,
                                        "abc"sv,
                                        "12a"sv,
                                        "a12"sv,
                                        "1 2"sv,
                                        "1.5"sv,
                                        "1."sv,
                                        "1e3"sv,
                                        "0x10"sv,
                                        "-"sv,
                                        "+"sv,
                                        "--1"sv,
                                        "- 1"sv,
                                        "1,000"sv,
                                        "9223372036854775808"sv,
                                        "-9223372036854775809"sv,
                                        "99999999999999999999999999"sv,
                                        "12\0"sv,
                                        "12\0 "sv,
                                        "\0"sv}) {
        EXPECT_EQ(ReadInteger(text), (Integer{0, 0})) << "'" << text << "'";
    }
}

TEST(StringToNum, ReadsReals) {
    const struct {
        std::string_view text;
        double expected;
    } cases[] = {
        {"0", 0.0},     {"1.5", 1.5},    {"-1.5", -1.5},  {"12", 12.0},     {"1.", 1.0},
        {".5", 0.5},    {"1e3", 1000.0}, {"1E3", 1000.0}, {"1.E-07", 1e-7}, {"2.5e+2", 250.0},
        {" 1.5 ", 1.5}, {"0.1", 0.1},    {"0001.5", 1.5}, {"1e308", 1e308},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(ReadReal(text), (Real{1, expected})) << "'" << text << "'";
    }
}

TEST(StringToNum, RefusesWhatIsNoRealAndLeaves0) {
    for (const std::string_view text :
         {""sv, " "sv, "abc"sv, "1.5a"sv, "1.5 a"sv, "1 .5"sv, "1,5"sv, "1.5.2"sv, "."sv, "e3"sv,
          "1e"sv, "-"sv, "1e400"sv, "-1e400"sv, "1.5\0"sv}) {
        EXPECT_EQ(ReadReal(text), (Real{0, 0.0})) << "'" << text << "'";
    }
}

TEST(StringToNum, ReadsAVeryLongNumber) {
    const std::string zeros(10'000, '0');
    EXPECT_EQ(ReadInteger(zeros + "7"), (Integer{1, 7}));
    EXPECT_EQ(ReadReal(zeros + "1.5" + zeros), (Real{1, 1.5}));
    EXPECT_EQ(ReadInteger("1" + zeros), (Integer{0, 0}));
}

// The part is the one that SubString gives, also for positions beyond int.
TEST(StringToNum, ReadsTheNumberInAPart) {
    const struct {
        const char* utf8;
        long start;
        long length;
        Integer expected;
    } cases[] = {
        {"S0034ORX", 1, 4, {1, 34}},
        {"S0034ORX", 1, 5, {0, 0}},
        {"S0034ORX", 0, 4, {0, 0}},
        {"a 7 b", 1, 3, {1, 7}},
        {"a-7", 1, 2, {1, -7}},
        // The part ends with the text.
        {"S0034", 1, 99, {1, 34}},
        {"S0034", 2, LONG_MAX, {1, 34}},
        {"S0034", 5, 1, {0, 0}},
        {"S0034", LONG_MAX, LONG_MAX, {0, 0}},
        {"S0034", 1, 0, {0, 0}},
        {"S0034", 1, -1, {0, 0}},
        // A start below 0 counts as 0; the length does not change.
        {"12345", -3, 2, {1, 12}},
        {"12345", LONG_MIN, 3, {1, 123}},
        {"12345", LONG_MIN, LONG_MIN, {0, 0}},
        // Characters are counted, not bytes.
        {"Łódź0034", 4, 4, {1, 34}},
        {"Łódź0034", 3, 5, {0, 0}},
        {"0034Łódź", -1, 4, {1, 34}},
        {"0034Łódź", -1, 5, {0, 0}},
    };
    for (const auto& [utf8, start, length, expected] : cases) {
        long number = 99;
        const int status =
            KORLocale::sConvertPartToNum(KORUnicodeString::FromUtf8(utf8), start, length, &number);
        EXPECT_EQ((Integer{status, number}), expected) << utf8 << ": " << start << ", " << length;
    }
}

TEST(StringToNum, ReadsBackWhatIsWritten) {
    for (const long value : {0L, 1L, -1L, LONG_MAX, LONG_MIN}) {
        EXPECT_EQ(ReadInteger(Written(value)), (Integer{1, value}));
    }
    for (const double value : {0.1, -1.5, 1e300, 1e-300, 5e-324, 123456.789}) {
        EXPECT_EQ(ReadReal(Written(value)), (Real{1, value}));
    }
}

TEST(Numbers, DoNotDependOnTheLocaleOfTheProcess) {
    const CommaLocale locale;
    if (!locale.Installed()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(Written(1.5), "1.5");
    EXPECT_EQ(Written(1234567.5, 7, 2), "1234567.50");
    EXPECT_EQ(ReadReal("1.5"), (Real{1, 1.5}));
    EXPECT_EQ(ReadReal("1,5"), (Real{0, 0.0}));
    KORUnicodeString text;
    text.BuildFromNum(1.5, "%02g");
    EXPECT_EQ(text.View(), "1.5");
}
