// `orx describe`.

#include <algorithm>

#include "HostTest.h"

using testing::HasSubstr;
using testing::Not;

namespace {

// Whether a line of the text has all these words.
bool HasLine(const std::string& text, const std::vector<std::string>& words) {
    for (const std::string& line : Lines(text)) {
        std::istringstream stream(line);
        std::vector<std::string> found;
        for (std::string word; stream >> word;) found.push_back(word);
        bool all = true;
        for (const std::string& word : words) {
            all &= std::find(found.begin(), found.end(), word) != found.end();
        }
        if (all) return true;
    }
    return false;
}

class Describe : public HostTest {};

}  // namespace

TEST_F(Describe, TellsTheSchemaAndHowManyInstancesOfEachTypeThereAre) {
    const OrxResult result = Orx({"describe", "-m", "parts.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("AUTOMOTIVE_DESIGN"));
    EXPECT_TRUE(HasLine(result.out, {"PRODUCT", "2"})) << result.out;
    EXPECT_TRUE(HasLine(result.out, {"APPLICATION_CONTEXT", "1"})) << result.out;
    EXPECT_TRUE(HasLine(result.out, {"PRODUCT_DEFINITION_FORMATION", "1"})) << result.out;
    EXPECT_THAT(result.out, Not(HasSubstr("CARTESIAN_POINT")));
}

TEST_F(Describe, NamesTheTypesOfTheDatabaseAsItsSchemaSpellsThem) {
    const OrxResult result = Orx({"describe", "-m", "db.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("cdma"));
    EXPECT_TRUE(HasLine(result.out, {"part_object", "2"})) << result.out;
}

TEST_F(Describe, TellsComplexTypesByAllTheirNames) {
    const OrxResult result = Orx({"describe", "--model", "assembly.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(HasLine(result.out, {"REPRESENTATION_RELATIONSHIP+"
                                     "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION+"
                                     "SHAPE_REPRESENTATION_RELATIONSHIP",
                                     "1"}))
        << result.out;
}

TEST_F(Describe, TellsWhichTypesTheSchemaDoesNotDeclare) {
    folder.Write("odd.stp", ExchangeFile("AUTOMOTIVE_DESIGN",
                                         "#1=MYSTERY_TYPE(1);\n"
                                         "#2=MYSTERY_TYPE(2);\n"
                                         "#3=PRODUCT('','',$,());\n"));
    const OrxResult result = Orx({"describe", "-m", "odd.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("MYSTERY_TYPE"));
    EXPECT_THAT(result.out, testing::ContainsRegex("[Uu]ndeclared|not declared|does not declare"));
    const std::string declared = Orx({"describe", "-m", "parts.stp"}).out;
    EXPECT_THAT(declared, Not(HasSubstr("MYSTERY_TYPE")));
}

TEST_F(Describe, TellsOfSeveralModels) {
    const OrxResult result = Orx({"describe", "-m", "first=parts.stp", "-m", "second=db.stp"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("first"));
    EXPECT_THAT(result.out, HasSubstr("second"));
    EXPECT_LT(result.out.find("AUTOMOTIVE_DESIGN"), result.out.find("cdma"));
    EXPECT_TRUE(HasLine(result.out, {"PRODUCT", "2"})) << result.out;
    EXPECT_TRUE(HasLine(result.out, {"part_object", "2"})) << result.out;
}

TEST_F(Describe, ReadsWithASchemaThatIsGiven) {
    folder.Write("plant.exp",
                 "SCHEMA plant; ENTITY machine; name : STRING; END_ENTITY; END_SCHEMA;");
    folder.Write("plant.stp", ExchangeFile("PLANT", "#1=MACHINE('a');\n"));
    EXPECT_EQ(Orx({"describe", "-m", "plant.stp"}).status, 2);
    for (const char* option : {"-s", "--schema"}) {
        const OrxResult result = Orx({"describe", option, "plant.exp", "-m", "plant.stp"});
        EXPECT_EQ(result.status, 0);
        EXPECT_TRUE(HasLine(result.out, {"MACHINE", "1"})) << result.out;
    }
}

TEST_F(Describe, FailsWithoutAModel) {
    const OrxResult result = Orx({"describe"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err, "");
}

TEST_F(Describe, FailsForAFileThatCannotBeRead) {
    for (const char* file : {"missing.stp", ".", "script.orx"}) {
        folder.Write("script.orx", "no exchange file at all");
        const OrxResult result = Orx({"describe", "-m", std::string("x=") + file});
        EXPECT_EQ(result.status, 2) << file;
        EXPECT_EQ(result.out, "") << file;
        EXPECT_THAT(result.err, HasSubstr(file));
    }
}
