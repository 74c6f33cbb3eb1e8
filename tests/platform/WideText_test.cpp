// Texts with characters beyond U+00FF.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "KORLocale.h"
#include "KORUnicodeString.h"
#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

using namespace std::string_view_literals;

namespace {

KORUnicodeString Utf8(std::string_view text) { return KORUnicodeString::FromUtf8(text); }

// A text in each language, its characters, and as `const char*`.
const struct {
    std::string_view utf8;
    std::u32string_view characters;
    std::string_view bytes;
} kTexts[] = {
    {"Łódź", U"Łódź",
     "\\X2\\0141\\X0\\\xF3"
     "d\\X2\\017A\\X0\\"},
    {"Άξονας", U"Άξονας",
     "\\X2\\0386\\X0\\\\X2\\03BE\\X0\\\\X2\\03BF\\X0\\\\X2\\03BD\\X0\\\\X2\\03B1\\X0\\"
     "\\X2\\03C2\\X0\\"},
    {"Болт 7", U"Болт 7", "\\X2\\0411\\X0\\\\X2\\043E\\X0\\\\X2\\043B\\X0\\\\X2\\0442\\X0\\ 7"},
    {"齿轮", U"齿轮", "\\X2\\9F7F\\X0\\\\X2\\8F6E\\X0\\"},
    {"a😀b", U"a😀b", "a\\X4\\0001F600\\X0\\b"},
};

}  // namespace

TEST(WideText, HoldsTheCharactersOfEveryLanguage) {
    for (const auto& [utf8, characters, bytes] : kTexts) {
        const KORUnicodeString text = Utf8(utf8);
        EXPECT_TRUE(text.IsWide()) << utf8;
        EXPECT_EQ(text.GetLengthInChar(), std::ssize(characters)) << utf8;
        EXPECT_EQ(text.ToUtf8(), utf8);
        EXPECT_EQ(text, KORUnicodeString(characters)) << utf8;
    }
}

TEST(WideText, IsInTheFormOfExchangeFilesAsCharacters) {
    for (const auto& [utf8, characters, bytes] : kTexts) {
        const KORUnicodeString text = Utf8(utf8);
        EXPECT_EQ(text.View(), bytes);
        EXPECT_STREQ(text.ConvertToChar(), std::string(bytes).c_str());
        EXPECT_STREQ(text.CastToCharPtr(), std::string(bytes).c_str());
        EXPECT_STREQ(static_cast<const char*>(text), std::string(bytes).c_str());
        EXPECT_EQ(text.GetLengthInByte(), std::ssize(bytes));
        EXPECT_STREQ(static_cast<const char*>(SdaiString(text)), std::string(bytes).c_str());
    }
}

TEST(WideText, IsNeverDecodedFromThatForm) {
    const KORUnicodeString wide = Utf8("Łódź");
    const KORUnicodeString narrow(wide.ConvertToChar());
    EXPECT_FALSE(narrow.IsWide());
    EXPECT_EQ(narrow.GetLengthInChar(), 26);
    EXPECT_FALSE(narrow == wide);
    EXPECT_FALSE(wide == narrow.ConvertToChar());
    EXPECT_TRUE(wide != narrow.ConvertToChar());
}

TEST(WideText, IsNarrowWhenNoCharacterIsBeyond) {
    const KORUnicodeString text = Utf8("Köln ±ÿ");
    EXPECT_FALSE(text.IsWide());
    EXPECT_EQ(text.GetLengthInChar(), 7);
    EXPECT_EQ(text.View(), "K\xF6ln \xB1\xFF");
    EXPECT_EQ(text.ToUtf8(), "Köln ±ÿ");
    EXPECT_FALSE(KORUnicodeString(U"a long text of narrow characters: ÿ"sv).IsWide());
    EXPECT_TRUE(Utf8("Ā").IsWide());
}

TEST(WideText, PutsTheReplacementCharacterWhereUtf8IsNotWellFormed) {
    const struct {
        std::string_view utf8;
        std::u32string_view expected;
    } cases[] = {
        {"a\xFF", U"a\uFFFD"},                              // never part of UTF-8
        {"\xC3", U"\uFFFD"},                                // cut off
        {"\xC5\x81\xC5", U"Ł\uFFFD"},                       // the same after a complete character
        {"\xC0\x80", U"\uFFFD\uFFFD"},                      // overlong
        {"\xE0\x80\xAF", U"\uFFFD\uFFFD\uFFFD"},            // overlong
        {"\xED\xA0\xBD", U"\uFFFD\uFFFD\uFFFD"},            // half a surrogate pair
        {"\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
        {"K\xF6ln", U"K\uFFFDln"},                          // ISO 8859-1
    };
    for (const auto& [utf8, expected] : cases) {
        EXPECT_EQ(Utf8(utf8), KORUnicodeString(expected)) << testing::PrintToString(utf8);
    }
    EXPECT_EQ(Utf8("\xF4\x8F\xBF\xBF"), KORUnicodeString(U"\U0010FFFF"sv));
}

TEST(WideText, PutsTheReplacementCharacterWhereACodePointIsNoCharacter) {
    const char32_t codePoints[] = {0xD800, 0xDFFF, 0x110000, 0x10FFFF};
    const KORUnicodeString text(std::u32string_view(codePoints, 4));
    EXPECT_EQ(text.ToUtf8(), "\uFFFD\uFFFD\uFFFD\U0010FFFF");
}

TEST(WideText, HoldsNul) {
    const KORUnicodeString text = Utf8("a\0Ł"sv);
    EXPECT_EQ(text.GetLengthInChar(), 3);
    EXPECT_EQ(text.View(), "a\0\\X2\\0141\\X0\\"sv);
    EXPECT_EQ(text.ToUtf8(), "a\0Ł"sv);
}

TEST(WideText, IsCutByCharacters) {
    const KORUnicodeString text = Utf8("S0004Łódź");
    EXPECT_EQ(text.SubString(5, 4).ToUtf8(), "Łódź");
    EXPECT_EQ(text.SubString(6, 1).ToUtf8(), "ó");
    EXPECT_EQ(text.SubString(8, INT_MAX).ToUtf8(), "ź");
    EXPECT_EQ(text.SubString(-3, 6).ToUtf8(), "S0004Ł");
    EXPECT_EQ(text.SubString(9, 1).ToUtf8(), "");
    EXPECT_EQ(text.SubString(5, 0).ToUtf8(), "");
    EXPECT_EQ(text.SubString(0, 9), text);
    EXPECT_TRUE(text.SubString(5, 1).IsWide());
    // Parts without a wide character are narrow.
    EXPECT_FALSE(text.SubString(0, 5).IsWide());
    EXPECT_FALSE(text.SubString(6, 2).IsWide());
    EXPECT_FALSE(Utf8("Ł a text that does not stand in place").SubString(1, 30).IsWide());
}

TEST(WideText, IsSearchedByCharacters) {
    const KORUnicodeString text = Utf8("Łódź–Łódź.model");
    EXPECT_EQ(text.SearchSubString(Utf8("Łódź"), 0, KORSearchForward), 0);
    EXPECT_EQ(text.SearchSubString(Utf8("Łódź"), 1, KORSearchForward), 5);
    EXPECT_EQ(text.SearchSubString(Utf8("Łódź"), 6, KORSearchForward), -1);
    EXPECT_EQ(text.SearchSubString(".model", 0, KORSearchFirst), 9);
    EXPECT_EQ(text.SearchSubString("d", 3, KORSearchFirst), 7);
    EXPECT_EQ(text.SearchSubString("", 4, KORSearchFirst), 4);
    EXPECT_EQ(text.SearchSubString("X2", 0, KORSearchFirst), -1);
    EXPECT_EQ(KORUnicodeString("A").SearchSubString(Utf8("Ł"), 0, KORSearchFirst), -1);
    EXPECT_EQ(KORUnicodeString("A").SearchSubString(Utf8("\u0141"), 0, KORSearchFirst), -1);
    // Not even if the lower byte is the same.
    EXPECT_EQ(text.SearchSubString("A", 0, KORSearchFirst), -1);
}

TEST(WideText, IsComparedByCharacters) {
    EXPECT_EQ(Utf8("Łódź").Compare(Utf8("Łódź")), 2);
    EXPECT_EQ(Utf8("Łódź").Compare(Utf8("Łó")), 1);
    EXPECT_EQ(Utf8("Łó").Compare(Utf8("Łódź")), 1);
    EXPECT_EQ(Utf8("óŁ").Compare("\xF3"), 1);
    EXPECT_EQ(KORUnicodeString("\xF3").Compare(Utf8("óŁ")), 1);
    EXPECT_EQ(Utf8("Łódź").Compare(Utf8("Łódz")), 0);
    EXPECT_EQ(Utf8("Ł").Compare(""), 0);
    EXPECT_EQ(Utf8("Ł").Compare("A"), 0);
    EXPECT_EQ(KORUnicodeString("ab").Compare(Utf8("aŁb")), 0);
    EXPECT_TRUE(Utf8("Łódź") == Utf8("Łódź"));
    EXPECT_FALSE(Utf8("Łódź") == Utf8("Łódz"));
    EXPECT_FALSE(Utf8("Ł") == KORUnicodeString("A"));
    EXPECT_TRUE(static_cast<bool>(SdaiString::FromUtf8("Б") == SdaiString::FromUtf8("Б")));
    EXPECT_FALSE(static_cast<bool>(SdaiString::FromUtf8("Б") == SdaiString::FromUtf8("В")));
    EXPECT_FALSE(static_cast<bool>(SdaiString::FromUtf8("Б") == "\x11"));
}

TEST(WideText, IsComparedInPartsByCharacters) {
    const KORUnicodeString text = Utf8("S0004Łódź");
    EXPECT_EQ(text.ComparePart(0, 5, "S0004"), 2);
    EXPECT_EQ(text.ComparePart(-1, 5, "S0004"), 2);
    EXPECT_EQ(text.ComparePart(-1, 6, "S0004"), 1);
    EXPECT_EQ(text.ComparePart(6, 2, "\xF3\x64"), 2);
    EXPECT_EQ(text.ComparePart(6, LONG_MAX, "\xF3\x64"), 1);
    EXPECT_EQ(text.ComparePart(5, 1, "L"), 0);
    // Not even if the lower byte is the same, or the form as `const char*`.
    EXPECT_EQ(text.ComparePart(5, 1, "A"), 0);
    EXPECT_EQ(text.ComparePart(5, 1, "\\X2\\0141\\X0\\"), 0);
    EXPECT_EQ(text.ComparePart(9, 1, ""), 2);
    EXPECT_EQ(text.ComparePart(5, 0, ""), 2);
}

TEST(WideText, IsStrippedOfBlanks) {
    for (const auto& [mode, expected] : {std::pair{KORStripLeading, "Ł b  "},
                                         {KORStripTrailing, "  Ł b"},
                                         {KORStripBoth, "Ł b"}}) {
        KORUnicodeString text = Utf8("  Ł b  ");
        text.Strip(mode);
        EXPECT_EQ(text.ToUtf8(), expected);
    }
    // The ideographic space is not a blank.
    KORUnicodeString text = Utf8("　齿　");
    text.Strip(KORStripBoth);
    EXPECT_EQ(text.ToUtf8(), "　齿　");
}

TEST(WideText, GrowsByTextsOfEitherKind) {
    for (const std::string_view start : {"", "ab", "ab, and more than fits in place", "Ł", "aŁ"}) {
        for (const std::string_view end : {"", "cd", "ÿ, and more than fits in place", "ź", "żc"}) {
            KORUnicodeString text = Utf8(start);
            text.Append(Utf8(end));
            const std::string whole = std::string(start) + std::string(end);
            EXPECT_EQ(text.ToUtf8(), whole);
            EXPECT_EQ(text, Utf8(whole));
            EXPECT_EQ(text.View(), Utf8(whole).View());
            EXPECT_EQ((SdaiString(Utf8(start)) + SdaiString(Utf8(end))).ToUtf8(), whole);
        }
    }
    // Bytes are characters of ISO 8859-1.
    KORUnicodeString text = Utf8("Ł");
    text.Append("\xF3\\X2\\0141\\X0\\");
    EXPECT_EQ(text.ToUtf8(), "Łó\\X2\\0141\\X0\\");
}

TEST(WideText, GrowsByItselfAndItsParts) {
    KORUnicodeString text = Utf8("Łó");
    text.Append(text);
    EXPECT_EQ(text.ToUtf8(), "ŁóŁó");
    text.Reserve(100);
    text.Append(text);
    EXPECT_EQ(text.ToUtf8(), "ŁóŁóŁóŁó");
    KORUnicodeString form = Utf8("Ł");
    form.Reserve(100);
    form.Append(form.View());
    EXPECT_EQ(form.ToUtf8(), "Ł\\X2\\0141\\X0\\");
    EXPECT_EQ(form.View(), "\\X2\\0141\\X0\\\\X2\\0141\\X0\\");
}

TEST(WideText, IsWrittenAnewAsCharactersAfterItHasGrown) {
    KORUnicodeString text = Utf8("Ł");
    text.Reserve(10);
    EXPECT_EQ(text.View(), "\\X2\\0141\\X0\\");
    text.Append("!");
    EXPECT_EQ(text.View(), "\\X2\\0141\\X0\\!");
}

TEST(WideText, IsBuiltPieceByPieceInLinearTime) {
    constexpr int kPieces = 1'000'000;
    KORUnicodeString text;
    const KORUnicodeString piece = Utf8("Ł");
    for (int i = 0; i < kPieces; ++i) text.Append(piece);
    EXPECT_EQ(text.GetLengthInChar(), kPieces);
    EXPECT_EQ(text.SubString(kPieces - 1, 5), piece);
}

TEST(WideText, StaysWhenACopyIsWritten) {
    const KORUnicodeString text = Utf8("Łódź");
    KORUnicodeString appended = text;
    KORUnicodeString reserved = text;
    appended.Append("!");
    reserved.Reserve(100);
    reserved.Append(Utf8("ź"));
    EXPECT_EQ(text.ToUtf8(), "Łódź");
    EXPECT_EQ(appended.ToUtf8(), "Łódź!");
    EXPECT_EQ(reserved.ToUtf8(), "Łódźź");
    KORUnicodeString moved = std::move(appended);
    EXPECT_EQ(moved.ToUtf8(), "Łódź!");
    moved = "narrow";
    EXPECT_EQ(moved.View(), "narrow");
    EXPECT_FALSE(moved.IsWide());
}

TEST(WideText, GivesItsFormToSeveralThreads) {
    for (int round = 0; round < 100; ++round) {
        const KORUnicodeString text = Utf8("Łódź");
        std::vector<std::thread> threads;
        std::vector<const char*> forms(4);
        for (const char*& form : forms) {
            threads.emplace_back([copy = text, &form] { form = copy.ConvertToChar(); });
        }
        for (std::thread& thread : threads) thread.join();
        for (const char* form : forms) EXPECT_EQ(form, text.ConvertToChar());
    }
}

TEST(WideText, IsNoNumber) {
    long integer = 7;
    double real = 7;
    EXPECT_EQ(KORLocale::sConvertStringToNum(Utf8("1Ł"), &integer), 0);
    EXPECT_EQ(integer, 0);
    EXPECT_EQ(KORLocale::sConvertStringToNum(Utf8("１"), &real), 0);
    EXPECT_EQ(real, 0);
}

// ---- Conversions of bytes

TEST(WideTextReadBack, GivesTheTextBackFromItsBytes) {
    for (const std::string_view utf8 : {"Łódź", "a😀b", "Köln", "", "Б\\X2\\0411\\X0\\"}) {
        const KORUnicodeString text = Utf8(utf8);
        EXPECT_EQ(text.ReadBack(text.View()).ToUtf8(), utf8);
    }
}

TEST(WideTextReadBack, TakesTheBytesThatHaveChanged) {
    const KORUnicodeString text = Utf8("Ł ó 齿 ");
    std::string bytes(text.View());
    for (char& c : bytes) {
        if (c == ' ') c = '\xB1';
    }
    EXPECT_EQ(text.ReadBack(bytes).ToUtf8(), "Ł±ó±齿±");
}

TEST(WideTextReadBack, ReadsNoDirectiveWhereNoWideCharacterStood) {
    const KORUnicodeString narrow("\\X2\\0141\\X0\\");
    EXPECT_EQ(narrow.ReadBack(narrow.View()), narrow);
    // A directive damaged by the conversion is read as its characters.
    const KORUnicodeString text = Utf8("Ł!");
    EXPECT_EQ(text.ReadBack("\\X2\\014_\\X0\\!").ToUtf8(), "\\X2\\014_\\X0\\!");
    EXPECT_EQ(text.ReadBack("\\X2\\01").ToUtf8(), "\\X2\\01");
    EXPECT_EQ(text.ReadBack("").ToUtf8(), "");
    EXPECT_EQ(text.ReadBack("\\X2\\0142\\X0\\?!").ToUtf8(), "ł?!");
}

// ---- SdaiString

TEST(WideString, IsCutByCharacters) {
    const SdaiString text = SdaiString::FromUtf8("Łódź.model");
    EXPECT_EQ(text.length(), 10U);
    EXPECT_EQ(text.substr(0, 3).ToUtf8(), "Łódź");
    EXPECT_EQ(text.substr(3, UINT_MAX).ToUtf8(), "ź.model");
    SdaiString name = text;
    name.remove(4, 10);
    EXPECT_EQ(name.ToUtf8(), "Łódź");
    name.remove(0, 0);
    EXPECT_EQ(name.ToUtf8(), "ódź");
    name.remove(2, UINT_MAX);
    EXPECT_EQ(name.ToUtf8(), "ód");
    EXPECT_EQ(name.View(),
              "\xF3"
              "d");
}

TEST(WideString, EqualsItselfInHandles) {
    const SdaiPrimitiveH a(SdaiString::FromUtf8("齿轮"));
    const SdaiPrimitiveH b(SdaiString::FromUtf8("齿轮"));
    const SdaiPrimitiveH form(SdaiString(static_cast<const SdaiString&>(a).View()));
    EXPECT_TRUE(static_cast<bool>(a == b));
    EXPECT_FALSE(static_cast<bool>(a == form));
    EXPECT_EQ(static_cast<const SdaiString&>(a).ToUtf8(), "齿轮");
}
