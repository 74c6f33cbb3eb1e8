// Values as exchange files contain them, and the decoding of strings of such files.

#include "ExchangeText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::string_literals;
using exchange::DecodedString;
using exchange::DecodeString;

// What a function appends; the existing text must not change.
template <class Append, class... Values>
std::string Appended(Append append, const Values&... values) {
    std::string text = "before ";
    append(text, values...);
    EXPECT_EQ(text.substr(0, 7), "before ");
    return text.substr(7);
}

std::string StringLiteral(const KORUnicodeString& text) {
    std::string literal = "before ";
    exchange::AppendString(literal, text);
    EXPECT_EQ(literal.substr(0, 7), "before ");
    return literal.substr(7);
}
std::string StringLiteral(std::string_view text) { return StringLiteral(KORUnicodeString(text)); }
std::string LiteralOfUtf8(std::string_view text) {
    return StringLiteral(KORUnicodeString::FromUtf8(text));
}
std::string RealLiteral(double value) { return Appended(exchange::AppendReal, value); }

struct Pair {
    std::string from;
    std::string to;
};

// ---- Strings to a file

TEST(AppendString, DoublesApostrophesAndBackslashes) {
    const Pair table[] = {
        {"", "''"},
        {"plain text", "'plain text'"},
        {"it's", "'it''s'"},
        {"''", "''''''"},
        {"C:\\dir\\", "'C:\\\\dir\\\\'"},
        {"\\", "'\\\\'"},
        {"\"quoted\"", "'\"quoted\"'"},
        {"/* no comment */", "'/* no comment */'"},
        {" ~", "' ~'"},  // the first and the last printable character
    };
    for (const Pair& pair : table) EXPECT_EQ(StringLiteral(pair.from), pair.to);
}

TEST(AppendString, WritesOtherBytesAsDirectives) {
    const Pair table[] = {
        {"\xE9", "'\\X\\E9'"},        {"a\xFF\x80z", "'a\\X\\FF\\X\\80z'"}, {"\n", "'\\X\\0A'"},
        {"\t\r", "'\\X\\09\\X\\0D'"}, {"\x1F \x7F", "'\\X\\1F \\X\\7F'"},   {"\0"s, "'\\X\\00'"},
    };
    for (const Pair& pair : table) EXPECT_EQ(StringLiteral(pair.from), pair.to);
}

TEST(AppendString, WritesCharactersBeyondIso8859AsDirectives) {
    const Pair table[] = {
        {"α", "'\\X2\\03B1\\X0\\'"},
        {"Łódź", "'\\X2\\0141\\X0\\\\X\\F3d\\X2\\017A\\X0\\'"},
        // Consecutive characters share a directive if they need the same number of digits.
        {"aαβ'b", "'a\\X2\\03B103B2\\X0\\''b'"},
        {"😀é", "'\\X4\\0001F600\\X0\\\\X\\E9'"},
        {"😀😁α", "'\\X4\\0001F6000001F601\\X0\\\\X2\\03B1\\X0\\'"},
        {"\\齿\\", "'\\\\\\X2\\9F7F\\X0\\\\\\'"},
        {"\uFFFF\U00010000", "'\\X2\\FFFF\\X0\\\\X4\\00010000\\X0\\'"},
    };
    for (const Pair& pair : table) EXPECT_EQ(LiteralOfUtf8(pair.from), pair.to);
}

TEST(AppendString, WritesWhatLooksLikeADirectiveAsText) {
    const Pair table[] = {
        {"\\X2\\0041\\X0\\", "'\\\\X2\\\\0041\\\\X0\\\\'"},
        {"\\X4\\0001F600\\X0\\", "'\\\\X4\\\\0001F600\\\\X0\\\\'"},
        {"\\X2\\03B1", "'\\\\X2\\\\03B1'"},
        {"\\X\\E9", "'\\\\X\\\\E9'"},
        {"\\S\\i", "'\\\\S\\\\i'"},
    };
    for (const Pair& pair : table) EXPECT_EQ(StringLiteral(pair.from), pair.to);
}

// ---- Other values to a file

TEST(AppendInteger, WritesDecimals) {
    EXPECT_EQ(Appended(exchange::AppendInteger, 0L), "0");
    EXPECT_EQ(Appended(exchange::AppendInteger, -7L), "-7");
    EXPECT_EQ(Appended(exchange::AppendInteger, LONG_MAX), "9223372036854775807");
    EXPECT_EQ(Appended(exchange::AppendInteger, LONG_MIN), "-9223372036854775808");
}

TEST(AppendLogical, WritesTheThreeValues) {
    EXPECT_EQ(Appended(exchange::AppendLogical, SdaiLogical(sdaiTRUE)), ".T.");
    EXPECT_EQ(Appended(exchange::AppendLogical, SdaiLogical(sdaiFALSE)), ".F.");
    EXPECT_EQ(Appended(exchange::AppendLogical, SdaiLogical()), ".U.");
}

TEST(AppendEnumeration, WritesTheNameBetweenPoints) {
    EXPECT_EQ(Appended(exchange::AppendEnumeration, "NOT_KNOWN"), ".NOT_KNOWN.");
}

TEST(AppendBinary, WritesTheDigitsBetweenDoubleQuotes) {
    EXPECT_EQ(Appended(exchange::AppendBinary, "3F0A"), "\"3F0A\"");
    EXPECT_EQ(Appended(exchange::AppendBinary, "0"), "\"0\"");
}

TEST(AppendReal, WritesTheShortestDecimalsWithAPoint) {
    EXPECT_EQ(RealLiteral(0.0), "0.");
    EXPECT_EQ(RealLiteral(1.0), "1.");
    EXPECT_EQ(RealLiteral(1.5), "1.5");
    EXPECT_EQ(RealLiteral(-0.5), "-0.5");
    EXPECT_EQ(RealLiteral(0.1), "0.1");
    EXPECT_EQ(RealLiteral(1e-7), "1.E-07");
}

TEST(AppendReal, WritesWhatIsNotFiniteByName) {
    EXPECT_EQ(RealLiteral(std::nan("")), "nan");
    EXPECT_EQ(RealLiteral(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(RealLiteral(-std::numeric_limits<double>::infinity()), "-inf");
}

// The length of the value with as few digits as possible and an exponent: 1.5E-07.
std::size_t ShortestWithExponent(double value) {
    char text[64];
    for (int digits = 1;; ++digits) {
        const int length = std::snprintf(text, sizeof text, "%.*e", digits - 1, value);
        // A single digit is printed without a point, which exchange files require.
        if (std::strtod(text, nullptr) == value) {
            return static_cast<std::size_t>(length + (digits == 1 ? 1 : 0));
        }
    }
}

void ExpectGoodReal(double value) {
    // A real has digits before the point and an upper-case E before its exponent.
    const std::string literal = RealLiteral(value);
    EXPECT_THAT(literal, testing::MatchesRegex("-?[0-9]+\\.[0-9]*(E[+-]?[0-9]+)?"));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(std::strtod(literal.c_str(), nullptr)),
              std::bit_cast<std::uint64_t>(value))
        << literal;
    // The point can make a whole number one character longer.
    EXPECT_LE(literal.size(), ShortestWithExponent(value) + 1) << literal;
}

// The shortest result of std::to_chars, with the point and the letter that exchange files require.
std::string ShortestLiteral(double value) {
    char characters[64];
    const auto end = std::to_chars(characters, characters + sizeof characters, value).ptr;
    std::string text(characters, end);
    const std::size_t exponent = std::min(text.find('e'), text.size());
    if (exponent != text.size()) text[exponent] = 'E';
    if (text.find('.') == std::string::npos) text.insert(exponent, ".");
    return text;
}

TEST(AppendReal, WritesTheShortestCharactersOfAll) {
    std::mt19937 random(7);
    const auto expect = [](double value) {
        for (const double each : {value, std::nextafter(value, 0.0), std::nextafter(value, 1e9)}) {
            ASSERT_EQ(RealLiteral(each), ShortestLiteral(each));
            ASSERT_EQ(RealLiteral(-each), ShortestLiteral(-each));
        }
    };
    for (int thousandths = 0; thousandths <= 20'000; ++thousandths) expect(thousandths / 1000.0);
    for (int i = 0; i < 20'000; ++i) {
        const auto digits = static_cast<double>(random() % 1'000'000'000);
        for (const double unit : {1.0, 10.0, 1e3, 1e4, 1e6, 1e12}) expect(digits / unit);
    }
    for (const double whole : {9'999.0, 10'000.0, 99'999.0, 99'999.999, 99'999.9995, 100'000.0}) {
        expect(whole);
    }
}

TEST(AppendReal, ReadsBackExactlyAtTheLimits) {
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0,
                               Limits::min(),
                               Limits::max(),
                               Limits::denorm_min(),
                               Limits::epsilon(),
                               0.1 + 0.2,
                               1e5,
                               1e15,
                               1e16,
                               1e17,
                               1e21,
                               1e22,
                               1e23,
                               123456789012345678.0,
                               9007199254740993.0,
                               1e-4,
                               1e-5,
                               1e100,
                               1e-100,
                               5e-324,
                               2.2250738585072011e-308}) {
        ExpectGoodReal(value);
        ExpectGoodReal(-value);
    }
}

TEST(AppendReal, ReadsBackExactlyWhateverTheValue) {
    std::mt19937_64 random(20240607);
    for (int i = 0; i < 5000; ++i) {
        const double value = std::bit_cast<double>(random());
        if (std::isfinite(value)) ExpectGoodReal(value);
        ExpectGoodReal(static_cast<double>(static_cast<long>(random() % 2000001) - 1000000) / 1000);
    }
}

// ---- Strings from a file

KORUnicodeString DecodedText(std::string_view encoded,
                             exchange::Encoding encoding = exchange::Encoding::Utf8) {
    const DecodedString decoded = DecodeString(encoded, encoding);
    EXPECT_EQ(decoded.error, nullptr) << encoded << ": " << decoded.error;
    return decoded.text;
}
// For texts with characters below U+0100 only.
std::string Decoded(std::string_view encoded) {
    const KORUnicodeString text = DecodedText(encoded);
    EXPECT_FALSE(text.IsWide()) << encoded;
    return std::string(text.View());
}
std::string DecodedUtf8(std::string_view encoded) { return DecodedText(encoded).ToUtf8(); }

TEST(DecodeString, UndoublesApostrophesAndBackslashes) {
    const Pair table[] = {
        {"", ""},
        {"plain", "plain"},
        {"it''s", "it's"},
        {"''''", "''"},
        {"C:\\\\dir\\\\", "C:\\dir\\"},
        {"\\\\X\\\\E9", "\\X\\E9"},  // text, not a directive
        {"\\\\\\\\", "\\\\"},
    };
    for (const Pair& pair : table) EXPECT_EQ(Decoded(pair.from), pair.to);
}

TEST(DecodeString, DecodesSingleCharacters) {
    const Pair table[] = {
        {"\\X\\E9", "\xE9"},
        {"caf\\X\\E9!", "caf\xE9!"},
        {"\\X\\0A\\X\\FF\\X\\27\\X\\5C", "\n\xFF'\\"},
        {"\\S\\i", "\xE9"},  // 69 and 80 hexadecimal
        {"\\S\\ \\S\\~", "\xA0\xFE"},
        {"\\X\\E9\\S\\i", "\xE9\xE9"},
        {"\\X\\e9\\X2\\00e9\\X0\\\\X4\\000000eA\\X0\\", "\xE9\xE9\xEA"},
        {"\\N\\a\\F\\b\\N\\\\F\\", "ab"},
        {"a\\\\N\\\\b", "a\\N\\b"},
    };
    for (const Pair& pair : table) EXPECT_EQ(Decoded(pair.from), pair.to) << pair.from;
}

TEST(DecodeString, DecodesRunsOfCharacters) {
    const Pair table[] = {
        {"\\X2\\00E9\\X0\\", "\xE9"},
        {"a\\X2\\00E900E80041\\X0\\b",
         "a\xE9\xE8"
         "Ab"},
        {"\\X4\\000000E9\\X0\\", "\xE9"},
        {"\\X4\\000000E900000041\\X0\\",
         "\xE9"
         "A"},
    };
    for (const Pair& pair : table) EXPECT_EQ(Decoded(pair.from), pair.to) << pair.from;
}

TEST(DecodeString, DecodesCharactersBeyondIso8859) {
    const Pair table[] = {
        {"\\X2\\03B1\\X0\\", "α"},
        {"a\\X2\\03B103B2\\X0\\b", "aαβb"},
        {"\\X4\\0001F600\\X0\\", "😀"},
        {"\\X2\\D83DDE00\\X0\\", "😀"},  // both halves of a surrogate pair
        {"\\X2\\03B1\\X0\\ \\X2\\03B2\\X0\\", "α β"},
        {"\\X2\\0100\\X0\\", "Ā"},
        {"\\X2\\FFFD\\X0\\", "\uFFFD"},
        {"\\X2\\00E903B100E8\\X0\\", "éαè"},
        {"\\X2\\03B1\\X0\\\\X2\\03B2\\X0\\", "αβ"},
        {"\\X4\\000003B10001F600000000E9\\X0\\", "α😀é"},
        {"\\X2\\03B1\\X0\\\\X\\E9\\X4\\0001F600\\X0\\", "αé😀"},
    };
    for (const Pair& pair : table) {
        EXPECT_EQ(DecodedUtf8(pair.from), pair.to) << pair.from;
        // Written and read again, they stay the same.
        const std::string literal = LiteralOfUtf8(pair.to);
        EXPECT_EQ(DecodedUtf8(literal.substr(1, literal.size() - 2)), pair.to) << literal;
    }
}

TEST(DecodeString, TellsWhatIsNoCharacter) {
    struct Case {
        const char* encoded;
        std::size_t errorAt;
        const char* utf8;
    };
    const Case table[] = {
        {"\\X2\\D83D\\X0\\", 4, "\uFFFD"},
        {"\\X2\\DE00\\X0\\", 4, "\uFFFD"},
        {"\\X2\\0041D83D\\X0\\", 8, "A\uFFFD"},
        {"\\X2\\D83D0041\\X0\\", 4, "\uFFFDA"},
        {"\\X2\\DE00D83D\\X0\\", 4, "\uFFFD\uFFFD"},
        // A surrogate pair must be within one directive.
        {"ab\\X2\\D83D\\X0\\\\X2\\DE00\\X0\\", 6, "ab\uFFFD\uFFFD"},
        {"\\X4\\0000D83D\\X0\\", 4, "\uFFFD"},
        {"\\X4\\00110000\\X0\\", 4, "\uFFFD"},
        {"\\X4\\FFFFFFFF\\X0\\", 4, "\uFFFD"},
    };
    for (const Case& tested : table) {
        const DecodedString decoded = DecodeString(tested.encoded);
        EXPECT_NE(decoded.error, nullptr) << tested.encoded;
        EXPECT_EQ(decoded.errorAt, tested.errorAt) << tested.encoded;
        EXPECT_EQ(decoded.text.ToUtf8(), tested.utf8) << tested.encoded;
    }
}

TEST(DecodeString, KnowsTheCodePages) {
    struct Case {
        const char* encoded;
        const char* utf8;
    };
    const Case table[] = {
        {"\\PA\\\\S\\i", "\xC3\xA9"},  // 8859-1: E9 is U+00E9
        {"\\PB\\\\S\\3", "\xC5\x82"},  // 8859-2: B3 is U+0142
        {"\\PB\\\\S\\i", "\xC3\xA9"},  // 8859-2: E9 is U+00E9
        {"\\PC\\\\S\\!", "\xC4\xA6"},  // 8859-3: A1 is U+0126
        {"\\PD\\\\S\\!", "\xC4\x84"},  // 8859-4: A1 is U+0104
        {"\\PE\\\\S\\P", "\xD0\xB0"},  // 8859-5: D0 is U+0430
        {"\\PF\\\\S\\G", "\xD8\xA7"},  // 8859-6: C7 is U+0627
        {"\\PG\\\\S\\a", "\xCE\xB1"},  // 8859-7: E1 is U+03B1
        {"\\PH\\\\S\\`", "\xD7\x90"},  // 8859-8: E0 is U+05D0
        {"\\PI\\\\S\\p", "\xC4\x9F"},  // 8859-9: F0 is U+011F
        // A page applies until the next one; it does not affect \X\.
        {"\\PG\\\\S\\a\\S\\b-\\PA\\\\S\\i", "\xCE\xB1\xCE\xB2-\xC3\xA9"},
        {"\\PG\\\\X\\E9", "\xC3\xA9"},
        {"\\PG\\text", "text"},
    };
    for (const Case& tested : table) {
        EXPECT_EQ(DecodedUtf8(tested.encoded), tested.utf8) << tested.encoded;
    }
    EXPECT_EQ(Decoded("\\PB\\\\S\\i"), "\xE9");
    EXPECT_EQ(Decoded("\\S\\i"), "\xE9") << "each string begins with page A";
}

TEST(DecodeString, DecodesUtf8) {
    EXPECT_EQ(Decoded("caf\xC3\xA9"), "caf\xE9");
    EXPECT_EQ(Decoded("\xC2\x80\xC3\xBF"), "\x80\xFF");
    EXPECT_EQ(DecodedUtf8("\xCE\xB1"), "α");
    EXPECT_EQ(DecodedUtf8("\xE4\xB8\xAD"), "中");
    EXPECT_EQ(DecodedUtf8("\xF0\x9F\x98\x80"), "😀");
    EXPECT_EQ(DecodedUtf8("αéβγ"), "αéβγ");
}

TEST(DecodeString, DecodesIso8859) {
    const auto decoded = [](std::string_view encoded) {
        return DecodedText(encoded, exchange::Encoding::Latin1).ToUtf8();
    };
    EXPECT_EQ(decoded("caf\xE9"), "café");
    EXPECT_EQ(decoded("\xC3\xA9"), "Ã©");
    EXPECT_EQ(decoded("\xE9\\X2\\03B1\\X0\\"), "éα");
}

TEST(DecodeString, KeepsBytesThatAreNoUtf8) {
    for (const char* text : {"\xE9", "caf\xE9", "\xE9\xE8",
                             "a\xFF"
                             "b",
                             "\x80", "\xC3", "\xC3(", "\xE4\xB8", "\xF0\x9F\x98"}) {
        EXPECT_EQ(Decoded(text), text);
    }
    // An overlong form and half a surrogate pair are not UTF-8, either.
    EXPECT_EQ(Decoded("\xC0\xAF"), "\xC0\xAF");
    EXPECT_EQ(Decoded("\xED\xA0\x80"), "\xED\xA0\x80");
}

TEST(DecodeString, DropsLineBreaks) {
    EXPECT_EQ(Decoded("a\nb"), "ab");
    EXPECT_EQ(Decoded("a\r\nb\n\nc\r"), "abc");
    EXPECT_EQ(DecodedUtf8("\\X2\\03B1\\X0\\\n''"), "α'");
}

TEST(DecodeString, TellsTheFirstPlaceThatCannotBeDecodedAndKeepsIt) {
    struct Case {
        const char* encoded;
        std::size_t errorAt;
    };
    const Case table[] = {
        {"\\", 0},
        {"ab\\", 2},
        {"ab\\Q", 2},
        {"a\\X\\G1", 1},
        {"\\X\\E", 0},
        {"\\X\\", 0},
        {"it\\X2\\00E9", 2},
        {"\\X2\\00E\\X0\\", 0},
        {"\\X2\\00G9\\X0\\", 0},
        {"\\X4\\000E9\\X0\\", 0},
        {"\\S\\", 0},
        {"\\S", 0},
        {"ab\\PZ\\", 2},
        {"\\P", 0},
        {"\\X3\\00E9\\X0\\", 0},
        {"\\n", 0},
    };
    for (const Case& tested : table) {
        const DecodedString decoded = DecodeString(tested.encoded);
        EXPECT_NE(decoded.error, nullptr) << tested.encoded;
        EXPECT_EQ(decoded.errorAt, tested.errorAt) << tested.encoded;
        EXPECT_EQ(decoded.text.View(), tested.encoded);
    }
}

TEST(DecodeString, GoesOnAfterWhatCannotBeDecoded) {
    const DecodedString decoded = DecodeString("\\Q \\X\\E9 it''s \\Z");
    EXPECT_NE(decoded.error, nullptr);
    EXPECT_EQ(decoded.errorAt, 0U);
    EXPECT_EQ(decoded.text.View(), "\\Q \xE9 it's \\Z");
}

TEST(DecodeString, SurvivesWhateverItIsGiven) {
    const std::string alphabet = "\\\\\\\\XSP024'ABE9i\n\xC3\xA9\xE4";
    std::mt19937 random(7);
    for (int i = 0; i < 50000; ++i) {
        std::string encoded;
        for (std::size_t length = random() % 24; length > 0; --length) {
            encoded += alphabet[random() % alphabet.size()];
        }
        const DecodedString decoded = DecodeString(encoded);
        if (decoded.error != nullptr) {
            EXPECT_LT(decoded.errorAt, encoded.size()) << encoded;
        }
        const std::string literal = StringLiteral(decoded.text);
        EXPECT_EQ(DecodedText(literal.substr(1, literal.size() - 2)), decoded.text) << encoded;
    }
}

TEST(DecodeString, GivesBackWhatAppendStringWrote) {
    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (std::size_t length = random() % 40; length > 0; --length) {
            text += random() % 4 == 0 ? "'\\X2"[random() % 4] : static_cast<char>(random() % 256);
        }
        const std::string literal = StringLiteral(text);
        ASSERT_GE(literal.size(), 2U);
        EXPECT_EQ(literal.front(), '\'');
        EXPECT_EQ(literal.back(), '\'');
        EXPECT_TRUE(std::all_of(literal.begin(), literal.end(), [](char c) {
            return c >= ' ' && c <= '~';
        })) << literal;
        EXPECT_EQ(Decoded(literal.substr(1, literal.size() - 2)), text);
    }
}

TEST(DecodeString, GivesBackCharactersThatAppendStringWrote) {
    std::mt19937 random(13);
    for (int i = 0; i < 20000; ++i) {
        std::u32string characters;
        for (std::size_t length = random() % 40; length > 0; --length) {
            static constexpr char32_t kLimits[] = {0x80, 0x100, 0x400, 0xD800, 0x110000};
            char32_t c = static_cast<char32_t>(random()) % kLimits[random() % 5];
            if (random() % 4 == 0) c = U"'\\X2"[random() % 4];
            characters += c;
        }
        const KORUnicodeString text{std::u32string_view(characters)};
        const std::string literal = StringLiteral(text);
        EXPECT_TRUE(std::all_of(literal.begin(), literal.end(), [](char c) {
            return c >= ' ' && c <= '~';
        })) << literal;
        EXPECT_EQ(DecodedText(literal.substr(1, literal.size() - 2)), text) << literal;
    }
}

}  // namespace
