// Whatever a script stores in a model can be saved and read again, or saving reports why not.

#include <random>

#include "HostTest.h"

namespace {

using testing::HasSubstr;

// Literals of all kinds, deep lists among them.
std::string Literal(std::mt19937_64& random, int depth = 0) {
    const auto below = [&random](std::size_t count) { return random() % count; };
    switch (below(depth > 4 ? 7 : 9)) {
        case 0: {
            std::string text;
            for (std::size_t i = below(12); i > 0; --i) {
                const char* const pieces[] = {"a",       "''", "\\\\", " ", ";",
                                              "\\X\\E9", ")",  "#1",   "="};
                text += pieces[below(std::size(pieces))];
            }
            return '\'' + text + '\'';
        }
        case 1: return std::to_string(static_cast<long>(random() >> 1));
        case 2: return std::to_string(below(1000)) + ".5E-" + std::to_string(below(300));
        case 3: return below(2) == 0 ? ".T." : ".U.";
        case 4: return "$";
        case 5: return "#1";
        case 6: return "#9223372036854775807";
        default: {
            std::string list;
            for (std::size_t i = below(4); i > 0; --i) {
                list += (list.empty() ? "" : ",") + Literal(random, depth + 1);
            }
            list = '(' + list + ')';
            const std::size_t more = below(30) == 0 ? below(120) : 0;
            return std::string(more, '(') + list + std::string(more, ')');
        }
    }
}

TEST(WrittenScripts, SaveWhatCanBeReadOrTellWhyNot) {
    const TemporaryDirectory folder;
    const std::string source =
        folder.Write("m.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                           "#9223372036854775807=PRODUCT('largest','',$,());\n"
                                           "#1=PRODUCT('first','',$,());\n"));
    int saved = 0;
    for (unsigned seed = 0; seed < 30; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random(seed);
        std::string script;
        for (int i = 0; i < 20; ++i) {
            const char* const attributes[] = {"ID", "NAME", "DESCRIPTION", "FRAME_OF_REFERENCE"};
            script += random() % 4 == 0 ? "NEW @m.PRODUCT(NAME = "
                                        : std::string("SET #1.") + attributes[random() % 4] + " = ";
            const bool isNew = script.ends_with("(NAME = ");
            script += Literal(random) + (isNew ? ")\n" : "\n");
        }
        const std::string copy = folder / "copy.stp";
        // Statements that are refused are skipped; the resulting model is saved.
        const OrxResult written = RunOrx({"run", "--keep-going", "-m", "m=" + source, "-o",
                                          "m=" + copy, folder.Write("script", script)});
        if (written.status == 2) {
            EXPECT_THAT(written.err, HasSubstr("cannot be written: #"));
            continue;
        }
        ++saved;
        const std::string again = folder / "again.stp";
        const OrxResult read = RunOrx({"call", "-m", "m=" + copy, "-o", "m=" + again, "#1.ID"});
        ASSERT_EQ(read.status, 0) << script << read.err;
        EXPECT_EQ(ReadFile(again), ReadFile(copy));
    }
    EXPECT_GT(saved, 5);
}

TEST(WrittenScripts, MayBeginWithAByteOrderMark) {
    const TemporaryDirectory folder;
    const OrxResult result =
        RunOrx({"run", folder.Write("script", "\xEF\xBB\xBF-- a remark\nLET a = 7\na\n")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "7\n");
}

}  // namespace
