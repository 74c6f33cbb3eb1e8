// KORUnicodeString and SdaiString.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Allocations.h"
#include "KORUnicodeString.h"
#include "SdaiString.h"

using namespace std::string_view_literals;

namespace {

// The longest text stored in the object itself, and the shortest stored elsewhere.
constexpr std::string_view k15 = "123456789012345";
constexpr std::string_view k16 = "1234567890123456";
constexpr std::string_view kLong = "A text that is a good deal longer than sixteen characters.";

KORUnicodeString Text(std::string_view text) { return KORUnicodeString(text); }

// For tests of both layouts of a text.
const std::vector<std::string> kAllLayouts{"",
                                           "a",
                                           std::string(k15),
                                           std::string(k16),
                                           std::string(17, 'x'),
                                           std::string(kLong),
                                           std::string(10'000, 'y')};

}  // namespace

// ---- KORUnicodeString: building and reading

TEST(Text, IsEmptyWhenBuiltFromNothing) {
    const KORUnicodeString text;
    EXPECT_EQ(text.GetLengthInChar(), 0);
    EXPECT_EQ(text.GetLengthInByte(), 0);
    EXPECT_EQ(text.View(), "");
    EXPECT_STREQ(text.ConvertToChar(), "");
}

TEST(Text, IsEmptyWhenBuiltFromANullPointer) {
    const KORUnicodeString text(static_cast<const char*>(nullptr));
    EXPECT_EQ(text.GetLengthInChar(), 0);
    EXPECT_STREQ(text.ConvertToChar(), "");
}

TEST(Text, HoldsTheCharactersUpToTheFirstNulOfAPointer) {
    EXPECT_EQ(KORUnicodeString("ab\0cd").View(), "ab");
}

TEST(Text, HoldsAnyCharactersOfAView) {
    const KORUnicodeString text("ab\0cd\xE9"sv);
    EXPECT_EQ(text.GetLengthInChar(), 6);
    EXPECT_EQ(text.GetLengthInByte(), 6);
    EXPECT_EQ(text.View(), "ab\0cd\xE9"sv);
}

TEST(Text, GivesItsCharactersInEveryLayout) {
    for (const std::string& characters : kAllLayouts) {
        const KORUnicodeString text(std::string_view{characters});
        EXPECT_EQ(text.View(), characters);
        EXPECT_EQ(text.GetLengthInChar(), static_cast<int>(characters.size()));
        EXPECT_EQ(text.GetLengthInByte(), static_cast<int>(characters.size()));
        EXPECT_STREQ(text.ConvertToChar(), characters.c_str());
        EXPECT_STREQ(text.CastToCharPtr(), characters.c_str());
        EXPECT_STREQ(static_cast<const char*>(text), characters.c_str());
    }
}

// ---- Copies and moves

TEST(Text, CopiesEveryLayout) {
    for (const std::string& characters : kAllLayouts) {
        const KORUnicodeString text(std::string_view{characters});
        const KORUnicodeString copy(text);
        KORUnicodeString assigned("something that stood here before");
        assigned = text;
        EXPECT_EQ(copy.View(), characters);
        EXPECT_EQ(assigned.View(), characters);
        EXPECT_EQ(text.View(), characters);
    }
}

TEST(Text, OutlivesTheTextItWasCopiedFrom) {
    KORUnicodeString copy;
    {
        const KORUnicodeString text(kLong);
        copy = text;
    }
    EXPECT_EQ(copy.View(), kLong);
}

TEST(Text, MovesEveryLayoutAndCanBeWrittenAfterwards) {
    for (const std::string& characters : kAllLayouts) {
        KORUnicodeString text(std::string_view{characters});
        KORUnicodeString moved(std::move(text));
        EXPECT_EQ(moved.View(), characters);
        text = Text("again");
        EXPECT_EQ(text.View(), "again");
        text = std::move(moved);
        EXPECT_EQ(text.View(), characters);
    }
}

TEST(Text, StaysWhenAssignedToItself) {
    for (const std::string& characters : kAllLayouts) {
        KORUnicodeString text(std::string_view{characters});
        const KORUnicodeString& same = text;
        text = same;
        EXPECT_EQ(text.View(), characters);
    }
}

TEST(Text, DoesNotChangeWhenACopyIsWritten) {
    for (const std::string& characters : kAllLayouts) {
        const std::string blanks = " " + characters + " ";
        const KORUnicodeString text(std::string_view{blanks});
        KORUnicodeString appended(text);
        KORUnicodeString stripped(text);
        KORUnicodeString numbered(text);
        appended.Append("!");
        stripped.Strip(KORStripBoth);
        numbered.BuildFromNum(7, "%04d");
        EXPECT_EQ(text.View(), blanks);
        EXPECT_EQ(appended.View(), blanks + "!");
        EXPECT_EQ(stripped.View(), characters);
        EXPECT_EQ(numbered.View(), "0007");
    }
}

TEST(Text, DoesNotChangeItsCopyWhenWritten) {
    KORUnicodeString text(kLong);
    const KORUnicodeString copy(text);
    text.Append("!");
    EXPECT_EQ(copy.View(), kLong);
}

TEST(Text, SharesTheCharactersOfALongTextWithItsCopies) {
    const KORUnicodeString text(kLong);
    const AllocationCounter allocations;
    const KORUnicodeString copy(text);
    KORUnicodeString assigned;
    assigned = copy;
    EXPECT_EQ(allocations.Count(), 0);
    EXPECT_EQ(copy.ConvertToChar(), text.ConvertToChar());
    EXPECT_EQ(assigned.ConvertToChar(), text.ConvertToChar());
}

TEST(Text, MayBeCopiedByManyThreadsAtOnce) {
    const KORUnicodeString text(kLong);
    std::vector<std::thread> threads;
    std::vector<int> wrong(4);
    for (int& count : wrong) {
        threads.emplace_back([&text, &count] {
            for (int i = 0; i < 10'000; ++i) {
                KORUnicodeString copy(text);
                if (i % 2 == 0) copy.Append("!");
                const std::size_t length = kLong.size() + (i % 2 == 0 ? 1 : 0);
                if (copy.View().size() != length || !copy.View().starts_with(kLong)) ++count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4));
    EXPECT_EQ(text.View(), kLong);
}

// ---- Allocations

TEST(Text, AllocatesNothingUpTo15Characters) {
    const AllocationCounter allocations;
    const KORUnicodeString text(k15);
    KORUnicodeString copy(text);
    KORUnicodeString number;
    number.BuildFromNum(-1234567, "%d");
    KORUnicodeString grown("1234567");
    grown.Append(Text("89012345"));
    copy.Strip(KORStripBoth);
    const KORUnicodeString part = text.SubString(3, 9);
    const bool found = text.SearchSubString(part, 0, KORSearchForward) == 3;
    EXPECT_EQ(allocations.Count(), 0);
    EXPECT_TRUE(found);
    EXPECT_EQ(grown.View(), k15);
    EXPECT_EQ(number.View(), "-1234567");
}

TEST(Text, AllocatesFrom16CharactersOn) {
    const AllocationCounter allocations;
    const KORUnicodeString text(k16);
    EXPECT_GE(allocations.Count(), 1);
}

TEST(Text, AppendsWithoutAllocationUpToWhatWasReserved) {
    KORUnicodeString text("start ");
    text.Reserve(1'000);
    EXPECT_EQ(text.View(), "start ");
    const AllocationCounter allocations;
    for (int i = 0; i < 994; ++i) text.Append("x");
    EXPECT_EQ(allocations.Count(), 0);
    EXPECT_EQ(text.View(), "start " + std::string(994, 'x'));
}

TEST(Text, KeepsItsCharactersWhenLessIsReservedThanItHas) {
    KORUnicodeString text(kLong);
    text.Reserve(0);
    text.Reserve(3);
    EXPECT_EQ(text.View(), kLong);
}

TEST(Text, DoesNotChangeItsCopyWhenItReserves) {
    KORUnicodeString text(kLong);
    const KORUnicodeString copy(text);
    text.Reserve(500);
    text.Append("!");
    EXPECT_EQ(copy.View(), kLong);
}

// ---- SubString

TEST(TextSubString, IsCutToTheText) {
    const KORUnicodeString text("abcdef");
    const struct {
        int start;
        int length;
        std::string_view expected;
    } cases[] = {
        {0, 6, "abcdef"},
        {0, 2, "ab"},
        {2, 3, "cde"},
        {5, 1, "f"},
        {5, 2, "f"},
        {6, 1, ""},
        {7, 1, ""},
        {0, 0, ""},
        {2, 0, ""},
        {2, -1, ""},
        {0, INT_MIN, ""},
        // A start below 0 counts as 0; the length does not change.
        {-1, 3, "abc"},
        {INT_MIN, 2, "ab"},
        {INT_MIN, INT_MAX, "abcdef"},
        {0, INT_MAX, "abcdef"},
        {3, INT_MAX, "def"},
        {INT_MAX, INT_MAX, ""},
        {INT_MAX, 1, ""},
    };
    for (const auto& [start, length, expected] : cases) {
        EXPECT_EQ(text.SubString(start, length).View(), expected) << start << ", " << length;
    }
}

TEST(TextSubString, GivesPartsOfEitherLayoutFromALongText) {
    const KORUnicodeString text(kLong);
    EXPECT_EQ(text.SubString(1, 15).View(), kLong.substr(1, 15));
    EXPECT_EQ(text.SubString(1, 16).View(), kLong.substr(1, 16));
    EXPECT_EQ(text.SubString(0, static_cast<int>(kLong.size())).View(), kLong);
}

TEST(TextSubString, OfAnEmptyTextIsEmpty) {
    EXPECT_EQ(KORUnicodeString().SubString(0, 5).View(), "");
}

TEST(TextSubString, TakesNulsLikeAnyCharacter) {
    EXPECT_EQ(Text("a\0b\0c"sv).SubString(1, 3).View(), "\0b\0"sv);
}

// ---- SearchSubString

TEST(TextSearch, FindsTheFirstOccurrenceAtOrAfterTheStart) {
    const struct {
        std::string_view text;
        std::string_view what;
        int start;
        int expected;
    } cases[] = {
        {"abcabc", "abc", 0, 0},
        {"abcabc", "abc", 1, 3},
        {"abcabc", "abc", 3, 3},
        {"abcabc", "abc", 4, -1},
        {"abcabc", "c", 5, 5},
        {"abcabc", "c", 6, -1},
        {"abcabc", "abcabcd", 0, -1},
        {"abcabc", "ABC", 0, -1},
        {"abcabc", "x", 0, -1},
        {"aaab", "aab", 0, 1},
        {"", "a", 0, -1},
        // A position outside the text is limited to it.
        {"abcabc", "abc", -5, 0},
        {"abcabc", "abc", INT_MIN, 0},
        {"abcabc", "c", 7, -1},
        {"abcabc", "c", INT_MAX, -1},
        // An empty text is found at the start.
        {"abc", "", 0, 0},
        {"abc", "", 2, 2},
        {"abc", "", 3, 3},
        {"", "", 0, 0},
        {"a\0b"sv, "\0b"sv, 0, 1},
        {"a\0b"sv, "b", 0, 2},
    };
    for (const auto& [text, what, start, expected] : cases) {
        for (const KORSearchMode mode : {KORSearchForward, KORSearchFirst}) {
            EXPECT_EQ(Text(text).SearchSubString(Text(what), start, mode), expected)
                << "'" << what << "' in '" << text << "' from " << start << ", mode " << mode;
        }
    }
}

TEST(TextSearch, FindsAnOccurrenceAtTheVeryEndOfALongText) {
    const KORUnicodeString text(std::string_view(std::string(kLong) + "_ORXExchangedRep_"));
    EXPECT_EQ(text.SearchSubString("_ORXExchangedRep_", 0, KORSearchForward),
              static_cast<int>(kLong.size()));
}

// ---- Strip

TEST(TextStrip, TakesBlanksFromTheEndsThatTheModeNames) {
    const struct {
        std::string_view text;
        std::string_view leading;
        std::string_view trailing;
        std::string_view both;
    } cases[] = {
        {"  ab ", "ab ", "  ab", "ab"},
        {"ab", "ab", "ab", "ab"},
        {" a b ", "a b ", " a b", "a b"},
        {"", "", "", ""},
        {"   ", "", "", ""},
        {"                    ", "", "", ""},
        // Only the character 0x20 is a blank.
        {"\t a \n", "\t a \n", "\t a \n", "\t a \n"},
        {"\xA0 a \xA0", "\xA0 a \xA0", "\xA0 a \xA0", "\xA0 a \xA0"},
        {" \0 "sv, "\0 "sv, " \0"sv, "\0"sv},
        {"  a text of a longer kind  ", "a text of a longer kind  ", "  a text of a longer kind",
         "a text of a longer kind"},
        // From the long layout to a text that would fit into the short one.
        {"                   a", "a", "                   a", "a"},
    };
    for (const auto& [text, leading, trailing, both] : cases) {
        KORUnicodeString stripped = Text(text);
        stripped.Strip(KORStripLeading);
        EXPECT_EQ(stripped.View(), leading) << "leading of '" << text << "'";
        EXPECT_EQ(std::string_view(stripped.ConvertToChar() + leading.size(), 1), "\0"sv);
        stripped = Text(text);
        stripped.Strip(KORStripTrailing);
        EXPECT_EQ(stripped.View(), trailing) << "trailing of '" << text << "'";
        EXPECT_EQ(std::string_view(stripped.ConvertToChar() + trailing.size(), 1), "\0"sv);
        stripped = Text(text);
        stripped.Strip(KORStripBoth);
        EXPECT_EQ(stripped.View(), both) << "both of '" << text << "'";
        EXPECT_EQ(std::string_view(stripped.ConvertToChar() + both.size(), 1), "\0"sv);
    }
}

// ---- Append

TEST(TextAppend, JoinsTextsOfEveryLayout) {
    for (const std::string& left : kAllLayouts) {
        for (const std::string& right : kAllLayouts) {
            KORUnicodeString text(std::string_view{left});
            KORUnicodeString& result = text.Append(Text(right));
            EXPECT_EQ(&result, &text);
            EXPECT_EQ(text.View(), left + right);
            EXPECT_STREQ(text.ConvertToChar(), (left + right).c_str());
        }
    }
}

TEST(TextAppend, CrossesFrom15To16Characters) {
    KORUnicodeString text(k15);
    text.Append("6");
    EXPECT_EQ(text.View(), k16);
    EXPECT_STREQ(text.ConvertToChar(), k16.data());
}

TEST(TextAppend, TakesViewsWithNulsWhole) {
    KORUnicodeString text("a");
    text.Append("\0b"sv).Append(Text("\0"sv));
    EXPECT_EQ(text.View(), "a\0b\0"sv);
}

TEST(TextAppend, DoublesATextThatIsAppendedToItself) {
    for (const std::string& characters : kAllLayouts) {
        KORUnicodeString text(std::string_view{characters});
        text.Append(text);
        EXPECT_EQ(text.View(), characters + characters);
    }
}

TEST(TextAppend, TakesAPartOfItself) {
    for (const std::string& characters : kAllLayouts) {
        if (characters.size() < 2) continue;
        KORUnicodeString text(std::string_view{characters});
        text.Append(text.View().substr(1));
        EXPECT_EQ(text.View(), characters + characters.substr(1));
        KORUnicodeString pointer(std::string_view{characters});
        pointer.Append(pointer.ConvertToChar());
        EXPECT_EQ(pointer.View(), characters + characters);
    }
}

TEST(TextAppend, GrowsByManySmallSteps) {
    KORUnicodeString text;
    std::string expected;
    for (int i = 0; i < 1'000; ++i) {
        const char c = static_cast<char>('a' + i % 26);
        text.Append(std::string_view(&c, 1));
        expected += c;
        ASSERT_EQ(text.View(), expected);
    }
}

// ---- BuildFromNum

TEST(TextBuildFromNum, WritesIntegersAsPrintfWould) {
    const struct {
        long value;
        const char* format;
        std::string_view expected;
    } cases[] = {
        {7, "%04d", "0007"},  {0, "%04d", "0000"},   {12345, "%04d", "12345"},
        {-7, "%04d", "-007"}, {7, "%02d", "07"},     {12, "%d", "12"},
        {-12, "%i", "-12"},   {12, "%u", "12"},      {255, "%x", "ff"},
        {255, "%X", "FF"},    {8, "%o", "10"},       {255, "%#x", "0xff"},
        {12, "%+d", "+12"},   {12, "%6d", "    12"}, {12, "%-6d", "12    "},
        {12, "% d", " 12"},   {12, "%.4d", "0012"},  {12, "%6.4d", "  0012"},
    };
    for (const auto& [value, format, expected] : cases) {
        KORUnicodeString text("something before");
        text.BuildFromNum(value, format);
        EXPECT_EQ(text.View(), expected) << value << " as a long with " << format;
        text.BuildFromNum(static_cast<int>(value), format);
        EXPECT_EQ(text.View(), expected) << value << " as an int with " << format;
    }
}

TEST(TextBuildFromNum, WritesTheWholeRangeOfIntegers) {
    KORUnicodeString text;
    text.BuildFromNum(INT_MIN, "%d");
    EXPECT_EQ(text.View(), "-2147483648");
    text.BuildFromNum(INT_MAX, "%d");
    EXPECT_EQ(text.View(), "2147483647");
    text.BuildFromNum(LONG_MIN, "%d");
    EXPECT_EQ(text.View(), "-9223372036854775808");
    text.BuildFromNum(LONG_MAX, "%d");
    EXPECT_EQ(text.View(), "9223372036854775807");
}

TEST(TextBuildFromNum, WritesANegativeIntegerInAnotherBaseAsItsTypeHoldsIt) {
    KORUnicodeString text;
    text.BuildFromNum(-1, "%x");
    EXPECT_EQ(text.View(), "ffffffff");
    text.BuildFromNum(-1L, "%x");
    EXPECT_EQ(text.View(), "ffffffffffffffff");
    text.BuildFromNum(-2, "%u");
    EXPECT_EQ(text.View(), "4294967294");
    text.BuildFromNum(-1, "%o");
    EXPECT_EQ(text.View(), "37777777777");
}

TEST(TextBuildFromNum, PadsWithZerosBehindTheSign) {
    KORUnicodeString text;
    const auto built = [&text](auto value, const char* format) {
        text.BuildFromNum(value, format);
        return std::string(text.View());
    };
    EXPECT_EQ(built(-7, "%02d"), "-7");
    EXPECT_EQ(built(-7, "%03d"), "-07");
    EXPECT_EQ(built(123, "%02d"), "123");
    EXPECT_EQ(built(-1.5, "%02g"), "-1.5");
    EXPECT_EQ(built(-1.5, "%06g"), "-001.5");
    EXPECT_EQ(built(-0.0, "%02g"), "-0");
    EXPECT_EQ(built(5.25, "%02g"), "5.25");
    EXPECT_EQ(built(1234567.0, "%02g"), "1.23457e+06");
    EXPECT_EQ(built(0.00001, "%02g"), "1e-05");
    EXPECT_EQ(built(INFINITY, "%05g"), "  inf");
    EXPECT_EQ(built(-INFINITY, "%02g"), "-inf");
}

TEST(TextBuildFromNum, WritesRealsAsPrintfWould) {
    const struct {
        double value;
        const char* format;
        std::string_view expected;
    } cases[] = {
        {5.0, "%02g", "05"},         {59.0, "%02g", "59"},           {0.0, "%02g", "00"},
        {1.5, "%g", "1.5"},          {1.5, "%f", "1.500000"},        {1.5, "%.2f", "1.50"},
        {-1.5, "%8.2f", "   -1.50"}, {1500.0, "%e", "1.500000e+03"}, {1500.0, "%E", "1.500000E+03"},
        {1e-10, "%G", "1E-10"},      {2.0, "%#.0f", "2."},           {1.5, "%+g", "+1.5"},
        {0.5, "%.1F", "0.5"},
    };
    for (const auto& [value, format, expected] : cases) {
        KORUnicodeString text("something before");
        text.BuildFromNum(value, format);
        EXPECT_EQ(text.View(), expected) << value << " with " << format;
    }
}

TEST(TextBuildFromNum, GivesAnEmptyTextForAFormatOfAnotherShape) {
    for (const char* format : {"",     "%",       "abc",  "%s",    "%n",    "%p",       "%c",
                               "%d%d", "%d %g",   "%*d",  "%.*d",  "%04",   "%1$d%2$d", "%1.2.3d",
                               "%4-d", "%1.2.3g", "%4+g", "%.-3d", "%.-3g", "%ld",      "%lg"}) {
        KORUnicodeString text("something before");
        text.BuildFromNum(7, format);
        EXPECT_EQ(text.View(), "") << "an int with " << format;
        text = "something before";
        text.BuildFromNum(7L, format);
        EXPECT_EQ(text.View(), "") << "a long with " << format;
        text = "something before";
        text.BuildFromNum(7.0, format);
        EXPECT_EQ(text.View(), "") << "a real with " << format;
    }
}

TEST(TextBuildFromNum, GivesAnEmptyTextForAFormatOfTheOtherKindOfNumber) {
    for (const char* format : {"%e", "%E", "%f", "%F", "%g", "%G", "%02g"}) {
        KORUnicodeString text("something before");
        text.BuildFromNum(7, format);
        EXPECT_EQ(text.View(), "") << "an int with " << format;
        text = "something before";
        text.BuildFromNum(7L, format);
        EXPECT_EQ(text.View(), "") << "a long with " << format;
    }
    for (const char* format : {"%d", "%i", "%u", "%x", "%X", "%o", "%04d"}) {
        KORUnicodeString text("something before");
        text.BuildFromNum(7.0, format);
        EXPECT_EQ(text.View(), "") << "a real with " << format;
    }
}

TEST(TextBuildFromNum, WritesUpTo511Characters) {
    KORUnicodeString text;
    text.BuildFromNum(7, "%511d");
    EXPECT_EQ(text.View(), std::string(510, ' ') + "7");
    text.BuildFromNum(7, "%512d");
    EXPECT_EQ(text.View(), "");
    text.BuildFromNum(1.0, "%.509f");
    EXPECT_EQ(text.View(), "1." + std::string(509, '0'));
    text.BuildFromNum(1.0, "%.510f");
    EXPECT_EQ(text.View(), "");
}

TEST(TextBuildFromNum, GivesAnEmptyTextForAnEnormousWidth) {
    KORUnicodeString text("something before");
    text.BuildFromNum(7, "%200000000d");
    EXPECT_EQ(text.View(), "");
    text = "something before";
    text.BuildFromNum(7, "%99999999999999999999d");
    EXPECT_EQ(text.View(), "");
    text = "something before";
    text.BuildFromNum(7.0, "%.99999999999999999999f");
    EXPECT_EQ(text.View(), "");
}

// ---- Compare and the operators

TEST(TextCompare, TellsIdenticalTextsAndBeginnings) {
    const struct {
        std::string_view a;
        std::string_view b;
        int expected;
    } cases[] = {
        {"", "", 2},
        {"abc", "abc", 2},
        {kLong, kLong, 2},
        {"ab", "abc", 1},
        {"a", "abc", 1},
        {k15, k16, 1},
        {"date_effectivity", "date_effectivity and more", 1},
        // The shorter text must not be empty.
        {"", "abc", 0},
        {"abc", "abd", 0},
        {"abc", "ABC", 0},
        {"abc", "ABCD", 0},
        {"bc", "abc", 0},
        {"ab", "ab\0"sv, 1},
        {"\0"sv, "", 0},
        {"a\0b"sv, "a\0c"sv, 0},
    };
    for (const auto& [a, b, expected] : cases) {
        EXPECT_EQ(Text(a).Compare(Text(b)), expected) << a << " and " << b;
        EXPECT_EQ(Text(b).Compare(Text(a)), expected) << b << " and " << a;
    }
}

// The part is the one that SubString gives, also for positions beyond int.
TEST(TextCompare, TellsWhetherAPartIsIdentical) {
    const struct {
        long start;
        long length;
        std::string_view other;
        int expected;
    } cases[] = {
        {0, 6, "abcdef", 2},
        {2, 3, "cde", 2},
        {2, 3, "cdefg", 1},
        {2, 3, "cd", 1},
        {2, 3, "cdx", 0},
        {2, 3, "CDE", 0},
        {2, 3, "", 0},
        // The part ends with the text.
        {4, 9, "ef", 2},
        {3, LONG_MAX, "def", 2},
        {6, 1, "", 2},
        {6, 1, "f", 0},
        {LONG_MAX, LONG_MAX, "", 2},
        {2, 0, "", 2},
        {2, -1, "", 2},
        {0, LONG_MIN, "a", 0},
        // A start below 0 counts as 0; the length does not change.
        {-1, 3, "abc", 2},
        {-1, 3, "ab", 1},
        {-7, 1, "a", 2},
        {LONG_MIN, 2, "ab", 2},
        {LONG_MIN, LONG_MAX, "abcdef", 2},
    };
    const KORUnicodeString text("abcdef");
    for (const auto& [start, length, other, expected] : cases) {
        EXPECT_EQ(text.ComparePart(start, length, other), expected)
            << start << ", " << length << " and " << other;
    }
    EXPECT_EQ(Text(kLong).ComparePart(1, 16, kLong.substr(1, 16)), 2);
    EXPECT_EQ(Text(kLong).ComparePart(-1, 16, kLong.substr(0, 16)), 2);
    EXPECT_EQ(Text("a\0b\0c"sv).ComparePart(1, 3, "\0b\0"sv), 2);
    EXPECT_EQ(KORUnicodeString().ComparePart(0, 5, ""), 2);
    EXPECT_EQ(KORUnicodeString().ComparePart(-1, 5, "a"), 0);
}

TEST(TextOperators, CompareWithAPointer) {
    EXPECT_TRUE(Text("abc") == "abc");
    EXPECT_FALSE(Text("abc") != "abc");
    EXPECT_FALSE(Text("abc") == "abd");
    EXPECT_TRUE(Text("abc") != "abd");
    EXPECT_FALSE(Text("abc") == "ab");
    EXPECT_FALSE(Text("abc") == "ABC");
    EXPECT_TRUE(KORUnicodeString() == "");
    // Text after a NUL counts.
    EXPECT_FALSE(Text("ab\0c"sv) == "ab");
    EXPECT_TRUE(Text("ab\0c"sv) != "ab");
}

TEST(TextOperators, CompareTwoTexts) {
    EXPECT_TRUE(Text(k16) == Text(k16));
    EXPECT_FALSE(Text(k16) == Text(k15));
    EXPECT_FALSE(Text("a\0b"sv) == Text("a\0c"sv));
    EXPECT_TRUE(KORUnicodeString() == KORUnicodeString());
}

// ---- SdaiString

TEST(SdaiStringTest, IsEmptyWhenBuiltFromNothing) {
    const SdaiString string;
    EXPECT_EQ(string.length(), 0U);
    EXPECT_STREQ(static_cast<const char*>(string), "");
}

TEST(SdaiStringTest, TakesAsManyCharactersAsTheLengthSays) {
    const struct {
        const char* text;
        unsigned length;
        std::string_view expected;
    } cases[] = {
        {"abc", UINT_MAX, "abc"}, {"abc", 3, "abc"},  {"abc", 2, "ab"},
        {"abc", 0, ""},           {"abc", 4, "abc"},  {"abc", 1'000'000, "abc"},
        {"a\0bc", 4, "a"},        {"", UINT_MAX, ""}, {nullptr, UINT_MAX, ""},
        {nullptr, 0, ""},         {nullptr, 5, ""},   {k16.data(), 15, k15},
        {k16.data(), 16, k16},
    };
    for (const auto& [text, length, expected] : cases) {
        EXPECT_EQ(SdaiString(text, length).View(), expected)
            << (text != nullptr ? text : "null") << ", " << length;
    }
}

TEST(SdaiStringTest, ReadsNoFurtherThanTheLengthSays) {
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(SdaiString(unterminated, 3).View(), "abc");
}

TEST(SdaiStringTest, TakesTheWholeTextWithoutALength) {
    EXPECT_EQ(SdaiString("abc").View(), "abc");
    EXPECT_EQ(SdaiString(kLong.data()).View(), kLong);
}

TEST(SdaiStringTest, ConvertsFromAndToThePlatformsText) {
    const KORUnicodeString text("ab\0c"sv);
    const SdaiString string(text);
    EXPECT_EQ(string.View(), "ab\0c"sv);
    EXPECT_EQ(string.length(), 4U);
    const KORUnicodeString& back = string;
    EXPECT_TRUE(back == text);
    EXPECT_STREQ(static_cast<const char*>(string), "ab");
    EXPECT_EQ(SdaiString(Text(kLong)).View(), kLong);
    EXPECT_EQ(SdaiString("a\0b"sv).View(), "a\0b"sv);
}

TEST(SdaiStringTest, IsAssignedFromPointersTextsAndStrings) {
    SdaiString string("before");
    string = "after";
    EXPECT_EQ(string.View(), "after");
    string = static_cast<const char*>(nullptr);
    EXPECT_EQ(string.View(), "");
    string = Text(kLong);
    EXPECT_EQ(string.View(), kLong);
    const SdaiString other("other");
    string = other;
    EXPECT_EQ(string.View(), "other");
    const SdaiString& same = string;
    string = same;
    EXPECT_EQ(string.View(), "other");
}

TEST(SdaiStringTest, IsAssignedAPartOfItself) {
    for (const std::string_view characters : {"abcdef"sv, kLong}) {
        SdaiString string(characters);
        string = static_cast<const char*>(string) + 2;
        EXPECT_EQ(string.View(), characters.substr(2));
    }
}

TEST(SdaiStringTest, DoesNotChangeWhenACopyIsWritten) {
    for (const std::string& characters : kAllLayouts) {
        const SdaiString string(std::string_view{characters});
        SdaiString copy(string);
        copy.remove(0, 0);
        EXPECT_EQ(string.View(), characters);
        EXPECT_EQ(copy.View(), characters.substr(characters.empty() ? 0 : 1));
    }
}

TEST(SdaiStringTest, SharesTheCharactersOfALongStringWithItsCopies) {
    const SdaiString string(kLong);
    const AllocationCounter allocations;
    const SdaiString copy(string);
    EXPECT_EQ(allocations.Count(), 0);
    EXPECT_EQ(static_cast<const char*>(copy), static_cast<const char*>(string));
}

TEST(SdaiStringTest, AllocatesNothingUpTo15Characters) {
    const AllocationCounter allocations;
    const SdaiString string(k15.data());
    SdaiString copy(string);
    copy.remove(0, 3);
    const SdaiString part = string.substr(4, 9);
    const SdaiString joined = part + SdaiString("789012345");
    EXPECT_EQ(allocations.Count(), 0);
    EXPECT_EQ(joined.View(), "567890789012345");
}

TEST(SdaiStringTest, CutsOutPositionsBothIncluded) {
    const SdaiString date("12312099235959");
    const struct {
        unsigned first;
        unsigned last;
        std::string_view expected;
    } cases[] = {
        {0, 1, "12"},
        {2, 3, "31"},
        {4, 7, "2099"},
        {8, 9, "23"},
        {10, 11, "59"},
        {12, 13, "59"},
        {0, 9, "1231209923"},
        {0, 0, "1"},
        {13, 13, "9"},
        {0, 13, "12312099235959"},
        {12, 99, "59"},
        {14, 14, ""},
        {14, 20, ""},
        {5, 4, ""},
        {0, UINT_MAX, "12312099235959"},
        {13, UINT_MAX, "9"},
        {UINT_MAX, UINT_MAX, ""},
        {UINT_MAX, 6, ""},
        {9, 6, ""},
    };
    for (const auto& [first, last, expected] : cases) {
        EXPECT_EQ(date.substr(first, last).View(), expected) << first << ", " << last;
    }
    EXPECT_EQ(SdaiString().substr(0, 5).View(), "");
    EXPECT_EQ(date.View(), "12312099235959");
}

TEST(SdaiStringTest, RemovesPositionsBothIncluded) {
    const struct {
        std::string_view text;
        unsigned first;
        unsigned last;
        std::string_view expected;
    } cases[] = {
        {"abcdef", 0, 0, "bcdef"},
        {"abcdef", 1, 3, "aef"},
        {"abcdef", 5, 5, "abcde"},
        {"abcdef", 3, 99, "abc"},
        {"abcdef", 3, UINT_MAX, "abc"},
        {"abcdef", 0, 5, ""},
        {"abcdef", 0, UINT_MAX, ""},
        {"abcdef", 6, 6, "abcdef"},
        {"abcdef", UINT_MAX, UINT_MAX, "abcdef"},
        {"abcdef", 3, 2, "abcdef"},
        {"", 0, 0, ""},
        // How a trailing ".model" is removed: from length - 6 to length.
        {"Door.model", 4, 10, "Door"},
        {".model", 0, 6, ""},
        {"A longer name of a door.model", 23, 29, "A longer name of a door"},
        {"a\0b\0c"sv, 1, 2, "a\0c"sv},
    };
    for (const auto& [text, first, last, expected] : cases) {
        SdaiString string(text);
        string.remove(first, last);
        EXPECT_EQ(string.View(), expected) << text << ": " << first << ", " << last;
        EXPECT_EQ(string.length(), expected.size());
        EXPECT_EQ(static_cast<const char*>(string)[expected.size()], '\0');
    }
}

TEST(SdaiStringTest, IsJoinedWithAnother) {
    for (const std::string& left : kAllLayouts) {
        for (const std::string& right : kAllLayouts) {
            const SdaiString a(std::string_view{left});
            const SdaiString b(std::string_view{right});
            EXPECT_EQ((a + b).View(), left + right);
            EXPECT_EQ(a.View(), left);
            EXPECT_EQ(b.View(), right);
        }
    }
    SdaiString string("ab");
    string = string + string;
    EXPECT_EQ(string.View(), "abab");
    EXPECT_EQ((SdaiString("a\0"sv) + SdaiString("\0b"sv)).View(), "a\0\0b"sv);
}

TEST(SdaiStringTest, ComparesExactly) {
    const SdaiString string("abc");
    EXPECT_TRUE((string == "abc") == sdaiTRUE);
    EXPECT_TRUE((string == "ABC") == sdaiFALSE);
    EXPECT_TRUE((string == "ab") == sdaiFALSE);
    EXPECT_TRUE((string == "abcd") == sdaiFALSE);
    EXPECT_TRUE((string == SdaiString("abc")) == sdaiTRUE);
    EXPECT_TRUE((string == SdaiString("abd")) == sdaiFALSE);
    EXPECT_TRUE((SdaiString("ab\0"sv) == "ab") == sdaiFALSE);
    EXPECT_TRUE((SdaiString() == "") == sdaiTRUE);
}
