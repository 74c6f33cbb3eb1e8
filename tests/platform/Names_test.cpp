// Names in the dictionary as constants of the source, and names of models and documents.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

#include "KORNameConversion.h"
#include "SdaiName.h"

using namespace sdai_names;

namespace {

std::string FileName(const std::string& name) {
    std::string buffer(name.size() + 3, '#');
    int status = 7;
    cmbflmd(name.c_str(), buffer.data(), &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(buffer[name.size()], '\0');
    EXPECT_EQ(buffer.substr(name.size() + 1), "##");
    return buffer.c_str();
}

std::string DatabaseName(const std::string& fileName) {
    std::string buffer(fileName.size() + 3, '#');
    cmbrcmd(fileName.c_str(), buffer.data());
    EXPECT_EQ(buffer[fileName.size()], '\0');
    EXPECT_EQ(buffer.substr(fileName.size() + 1), "##");
    return buffer.c_str();
}

}  // namespace

// ---- SdaiName

TEST(Names, KeepTheirTextAndFoldItsLetters) {
    constexpr const SdaiName& name = "Start_Date1"_name;
    EXPECT_EQ(name.text, "Start_Date1");
    EXPECT_EQ(name.folded, "START_DATE1");
    EXPECT_EQ(name.text.data()[name.text.size()], '\0');
}

TEST(Names, OfOneTextAreOneConstant) {
    EXPECT_EQ(&"REP_1"_name, &"REP_1"_name);
    EXPECT_NE(&"REP_1"_name, &"REP_2"_name);
}

TEST(Names, FoldOnlyTheLettersAToZ) {
    for (int c = 0; c < 256; ++c) {
        const char character = static_cast<char>(c);
        const char expected = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : character;
        EXPECT_EQ(SdaiFoldCase(character), expected) << c;
    }
}

TEST(NameHash, IsOneForEveryCaseAndLength) {
    const std::string lower = "abcdefghijklmnopqrstuvwxyz_0123456789_abcdefghijklmnopqrstuvwxyz";
    const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789_ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (std::size_t length = 0; length <= lower.size(); ++length) {
        for (std::size_t from = 0; from + length <= lower.size(); ++from) {
            EXPECT_EQ(SdaiNameHash(std::string_view(lower).substr(from, length)),
                      SdaiNameHash(std::string_view(upper).substr(from, length)))
                << from << ", " << length;
        }
    }
}

TEST(NameHash, IsTheSameAtCompileTimeAndAtRunTime) {
    EXPECT_EQ("a"_name.hash, SdaiNameHash(std::string("A")));
    EXPECT_EQ("REP_1"_name.hash, SdaiNameHash(std::string("rep_1")));
    EXPECT_EQ("sevenxx"_name.hash, SdaiNameHash(std::string("SEVENXX")));
    EXPECT_EQ("eight_xx"_name.hash, SdaiNameHash(std::string("EIGHT_XX")));
    EXPECT_EQ("nine_xxxx"_name.hash, SdaiNameHash(std::string("NINE_XXXX")));
    EXPECT_EQ("sixteen_sixteen_"_name.hash, SdaiNameHash(std::string("SIXTEEN_SIXTEEN_")));
    EXPECT_EQ("seventeen_sevente"_name.hash, SdaiNameHash(std::string("SEVENTEEN_SEVENTE")));
    EXPECT_EQ("relating_product_definition"_name.hash,
              SdaiNameHash(std::string("RELATING_PRODUCT_DEFINITION")));
    // Bytes next to the letters, and beyond ASCII.
    EXPECT_EQ("@[`{\xE9\xC9\xFF\x80"_name.hash, SdaiNameHash(std::string("@[`{\xE9\xC9\xFF\x80")));
}

TEST(NameHash, TellsNamesApartThatLookAlike) {
    const std::string_view names[] = {
        "REP_1",           "REP_2", "1_REP", "REP_11", "REP", "", "REP_1 ", "TRANSFORM_ITEM_1",
        "TRANSFORM_ITEM_2"};
    for (const std::string_view a : names) {
        for (const std::string_view b : names) {
            if (a != b) {
                EXPECT_NE(SdaiNameHash(a), SdaiNameHash(b)) << a << ", " << b;
            }
        }
    }
}

// ---- Names of models and documents

TEST(FileName, HasAPlusMinusSignForEveryBlank) {
    EXPECT_EQ(FileName("Left Door"),
              "Left\xB1"
              "Door");
    EXPECT_EQ(FileName("  a  b "),
              "\xB1\xB1"
              "a\xB1\xB1"
              "b\xB1");
    EXPECT_EQ(FileName("NoBlank"), "NoBlank");
    EXPECT_EQ(FileName(""), "");
    EXPECT_EQ(FileName("tab\there"), "tab\there");
    EXPECT_EQ(FileName("already\xB1there"), "already\xB1there");
}

TEST(DatabaseName, HasABlankForEveryPlusMinusSign) {
    EXPECT_EQ(DatabaseName("Left\xB1"
                           "Door"),
              "Left Door");
    EXPECT_EQ(DatabaseName("\xB1"), " ");
    EXPECT_EQ(DatabaseName("NoSign"), "NoSign");
    EXPECT_EQ(DatabaseName(""), "");
    EXPECT_EQ(DatabaseName("a blank stays"), "a blank stays");
}

TEST(FileName, IsConvertedWholeWhateverItsLength) {
    std::string name;
    while (name.size() < 5'000) name += "part of a name ";
    EXPECT_EQ(DatabaseName(FileName(name)), name);
    EXPECT_EQ(FileName(name).size(), name.size());
}
