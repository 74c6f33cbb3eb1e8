// Columns of the output: aligned by the width on a terminal, whatever the characters.

#include "console/Columns.h"

#include <gtest/gtest.h>

namespace {

using host::Columns;
using host::Form;

// Wide characters, one with a combining mark, one beyond the Basic Multilingual Plane.
std::string Written(Form form) {
    testing::internal::CaptureStdout();
    {
        Columns columns(form, {"part", "count", "of"});
        columns.Add({"\u8F74\u627F", "1", "a"});
        columns.Add({"e\u0301", "22", "b"});
        columns.Add({"\U0001F529", "\uFF21", "c"});
        columns.Add({"Bolts", "333333", "d"});
    }
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(Columns, AreAsWideAsTheirTextsOnATerminal) {
    EXPECT_EQ(Written(Form::Aligned),
              "part   count   of\n"
              "\u8F74\u627F   1       a\n"
              "e\u0301      22      b\n"
              "\U0001F529     \uFF21      c\n"
              "Bolts  333333  d\n");
}

TEST(Columns, FitIntoBoxes) {
    EXPECT_EQ(Written(Form::Box),
              "┌───────┬────────┬────┐\n"
              "│ part  │ count  │ of │\n"
              "├───────┼────────┼────┤\n"
              "│ \u8F74\u627F  │ 1      │ a  │\n"
              "│ e\u0301     │ 22     │ b  │\n"
              "│ \U0001F529    │ \uFF21     │ c  │\n"
              "│ Bolts │ 333333 │ d  │\n"
              "└───────┴────────┴────┘\n");
}

TEST(Columns, AreSeparatedByTabsElsewhere) {
    EXPECT_EQ(Written(Form::Tabs),
              "\u8F74\u627F\t1\ta\ne\u0301\t22\tb\n\U0001F529\t\uFF21\tc\nBolts\t333333\td\n");
}
