// The writer of exchange files: its output, and the state of the target file if writing fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "Exchange.h"
#include "Orx.h"
#include "ParsedModel.h"

// Counts calls that set the mask, which is shared by the whole process.
static int maskCalls = 0;
extern "C" mode_t umask(mode_t mask) noexcept {
    ++maskCalls;
    return static_cast<mode_t>(syscall(SYS_umask, mask));
}

namespace {

using exchange::DataSet;
using exchange::Messages;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kSchema = R"(SCHEMA test_schema;
TYPE length_measure = REAL; END_TYPE;
TYPE label = STRING; END_TYPE;
TYPE colour = ENUMERATION OF (red, green); END_TYPE;
TYPE numbers = LIST OF REAL; END_TYPE;
TYPE choice = SELECT (length_measure, label, numbers, item); END_TYPE;
ENTITY item; name : OPTIONAL label; END_ENTITY;
ENTITY all;
  a_text : OPTIONAL STRING; an_integer : OPTIONAL INTEGER; a_real : OPTIONAL REAL;
  a_boolean : OPTIONAL BOOLEAN; a_logical : OPTIONAL LOGICAL; a_binary : OPTIONAL BINARY;
  a_colour : OPTIONAL colour; an_item : OPTIONAL item; a_choice : OPTIONAL choice;
  reals : OPTIONAL LIST OF REAL;
END_ENTITY;
ENTITY real_holder; number : OPTIONAL REAL; END_ENTITY;
ENTITY choice_holder; choice : OPTIONAL choice; END_ENTITY;
ENTITY grid_holder; grid : OPTIONAL LIST OF LIST OF REAL; END_ENTITY;
ENTITY base; base_name : OPTIONAL STRING; END_ENTITY;
ENTITY left SUBTYPE OF (base); left_rank : OPTIONAL INTEGER; END_ENTITY;
ENTITY right SUBTYPE OF (base);
  right_rank : OPTIONAL INTEGER;
DERIVE
  SELF\base.base_name : STRING := 'right';
END_ENTITY;
END_SCHEMA;)";

exchange::SchemaPtr TestSchema() {
    Messages messages;
    return exchange::ParseSchemas(kSchema, "schema", messages).at(0);
}

DataSet Parse(const std::string& text) {
    exchange::SchemaCatalog schemas;
    schemas.Add(TestSchema());
    Messages messages;
    DataSet dataSet = exchange::ParseDataSet(text, "file", schemas, {}, messages);
    for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    for (const auto& warning : messages.Warnings()) ADD_FAILURE() << warning.ToString();
    if (dataSet.model == nullptr) throw std::runtime_error("the test's file cannot be read");
    return dataSet;
}

SdaiAppInstance* New(const DataSet& dataSet, const char* type) {
    return dataSet.model->GetEntityDefinition(type)->CreateEntityInstance(dataSet.model.get());
}

// The lines of the data section.
std::vector<std::string> DataLines(const DataSet& dataSet) {
    std::istringstream text(exchange::ToExchangeText(dataSet));
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(text, line) && line != "DATA;") continue;
    while (std::getline(text, line) && line != "ENDSEC;") lines.push_back(line);
    return lines;
}

// ---- Values

TEST(ExchangeWriter, WritesEveryKindOfValue) {
    const DataSet dataSet = exchange::NewDataSet(TestSchema(), "new");
    SdaiAppInstance* item = New(dataSet, "ITEM");
    SdaiAppInstance* all = New(dataSet, "ALL");
    SdaiAggrInstance reals;
    for (const double real : {1.0, -2.5, 1e-7}) reals.Append(real);
    all->PutAttr("A_TEXT", SdaiString("it's \\ \xE9"));
    all->PutAttr("AN_INTEGER", -7L);
    all->PutAttr("A_REAL", 3L);  // becomes a real, as the schema declares
    all->PutAttr("A_BOOLEAN", sdaiFALSE);
    all->PutAttr("A_LOGICAL", SdaiLogical());
    all->PutAttr("A_BINARY", SdaiPrimitiveH::Binary("2F"));
    all->PutAttr("A_COLOUR", SdaiPrimitiveH::Enumeration("GREEN"));
    all->PutAttr("AN_ITEM", item);
    all->PutAttr("A_CHOICE", SdaiSelectH("LENGTH_MEASURE", 2.5));
    all->PutAttr("REALS", &reals);
    EXPECT_THAT(DataLines(dataSet),
                ElementsAre("#1=ITEM($);",
                            "#2=ALL('it''s \\\\ \\X\\E9',-7,3.,.F.,.U.,\"2F\",.GREEN.,#1,"
                            "LENGTH_MEASURE(2.5),(1.,-2.5,1.E-07));"));
}

TEST(ExchangeWriter, WritesUnsetValuesAsDollarsAndDerivedOnesAsAsterisks) {
    const DataSet dataSet = exchange::NewDataSet(TestSchema(), "new");
    New(dataSet, "LEFT");
    New(dataSet, "RIGHT")->PutAttr("BASE_NAME", SdaiString("stays derived"));
    const SdaiAggrInstance empty;
    New(dataSet, "GRID_HOLDER")->PutAttr("GRID", const_cast<SdaiAggrInstance*>(&empty));
    EXPECT_THAT(DataLines(dataSet),
                ElementsAre("#1=LEFT($,$);", "#2=RIGHT(*,$);", "#3=GRID_HOLDER(());"));
}

TEST(ExchangeWriter, WritesComplexInstancesWithTheirPartsInAlphabeticalOrder) {
    const DataSet dataSet = Parse(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('TEST_SCHEMA'));ENDSEC;DATA;"
        "#7=(RIGHT(1)BASE(*)LEFT(2));#3=(LEFT($)BASE('b'));ENDSEC;END-ISO-10303-21;");
    EXPECT_THAT(DataLines(dataSet),
                ElementsAre("#7=(BASE(*)LEFT(2)RIGHT(1));", "#3=(BASE('b')LEFT($));"));
}

TEST(ExchangeWriter, WritesInstancesInTheOrderOfTheirCreation) {
    const DataSet dataSet = Parse(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('TEST_SCHEMA'));ENDSEC;DATA;"
        "#30=ITEM('a');#10=CURVE(1);#20=ITEM('c');ENDSEC;END-ISO-10303-21;");
    New(dataSet, "ITEM");
    EXPECT_THAT(DataLines(dataSet),
                ElementsAre("#30=ITEM('a');", "#10=CURVE(1);", "#20=ITEM('c');", "#31=ITEM($);"));
}

TEST(ExchangeWriter, WritesTypeNamesOfTheDatabaseSchemaInUpperCase) {
    const DataSet dataSet = exchange::NewDataSet(exchange::BuiltInSchema("cdma"), "new");
    New(dataSet, "part_object")->PutAttr("S_PART_NUMBER", SdaiString("P1"));
    const std::string text = exchange::ToExchangeText(dataSet);
    EXPECT_THAT(text, HasSubstr("#1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);"));
    Messages messages;
    const DataSet again =
        exchange::ParseDataSet(text, "again", exchange::SchemaCatalog(), {}, messages);
    EXPECT_EQ(messages.ErrorCount(), 0U);
    ASSERT_NE(again.model, nullptr);
    EXPECT_EQ(again.model->SchemaName().View(), "cdma");
}

// ---- The header and the sections

TEST(ExchangeWriter, KeepsTheHeader) {
    const std::string text =
        "ISO-10303-21;\nHEADER;\n"
        "FILE_DESCRIPTION(('it''s','a \\X\\E9 \\X2\\03B1\\X0\\'),'2;1');\n"
        "FILE_NAME('name','2024-01-02T03:04:05',('a','b'),(''),'tool','system',$);\n"
        "FILE_SCHEMA(('TEST_SCHEMA { 1 0 10303 214 1 1 1 1 }'));\n"
        "!MY_RECORD(1,-2.5,.T.,TYPED('x'),((),*),\"1F\");\nENDSEC;\n"
        "DATA;\n#1=ITEM('a');\nENDSEC;\nEND-ISO-10303-21;\n";
    const DataSet dataSet = Parse(text);
    const std::string written = exchange::ToExchangeText(dataSet);
    for (const char* record :
         {"FILE_DESCRIPTION(('it''s','a \\X\\E9 \\X2\\03B1\\X0\\'),'2;1');",
          "FILE_NAME('name','2024-01-02T03:04:05',('a','b'),(''),'tool','system',$);",
          "FILE_SCHEMA(('TEST_SCHEMA { 1 0 10303 214 1 1 1 1 }'));",
          "!MY_RECORD(1,-2.5,.T.,TYPED('x'),((),*),\"1F\");"}) {
        EXPECT_THAT(written, HasSubstr(record));
    }
    EXPECT_THAT(written, StartsWith("ISO-10303-21;"));
    EXPECT_THAT(written, HasSubstr("END-ISO-10303-21;"));
    const DataSet again = Parse(written);
    ASSERT_EQ(again.header.size(), dataSet.header.size());
    for (std::size_t i = 0; i < again.header.size(); ++i) {
        EXPECT_EQ(again.header[i].keyword, dataSet.header[i].keyword);
        EXPECT_EQ(again.header[i].parameters, dataSet.header[i].parameters);
    }
    EXPECT_EQ(exchange::ToExchangeText(again), written);
}

TEST(ExchangeWriter, WritesPlainCharactersOnly) {
    const DataSet dataSet = exchange::NewDataSet(TestSchema(), "n\xE4me 'x' \\ \n");
    std::string everything;
    for (int c = 1; c < 256; ++c) everything += static_cast<char>(c);
    New(dataSet, "ITEM")->PutAttr("NAME", SdaiString(std::string_view(everything)));
    const std::string text = exchange::ToExchangeText(dataSet);
    for (const char c : text) EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~')) << int{c};
    const DataSet again = Parse(text);
    const SdaiPrimitiveH name = again.model->Find(1)->GetAttr("NAME");
    EXPECT_EQ(TextIn(name), everything);
}

TEST(NewDataSet, HasTheHeaderOfANewFile) {
    const DataSet dataSet = exchange::NewDataSet(TestSchema(), "the name");
    std::vector<std::string> keywords;
    for (const auto& record : dataSet.header) keywords.push_back(record.keyword);
    EXPECT_THAT(keywords, ElementsAre("FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"));
    EXPECT_THAT(dataSet.header[1].parameters, HasSubstr("'the name'"));
    EXPECT_THAT(dataSet.header[2].parameters, HasSubstr("'TEST_SCHEMA'"));
    ASSERT_NE(dataSet.model, nullptr);
    EXPECT_EQ(dataSet.model->InstanceCount(), 0U);
    const DataSet again = Parse(exchange::ToExchangeText(dataSet));
    EXPECT_EQ(again.model->SchemaName().View(), "TEST_SCHEMA");
    EXPECT_EQ(exchange::ToExchangeText(again), exchange::ToExchangeText(dataSet));
}

// ---- Files

struct Target {
    TemporaryDirectory directory;
    DataSet dataSet = Parse(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('TEST_SCHEMA'));ENDSEC;DATA;#1=ITEM('a');ENDSEC;"
        "END-ISO-10303-21;");
    Messages messages;

    bool Write(const std::string& path) { return exchange::WriteDataSet(dataSet, path, messages); }
    void ExpectFailure(const std::string& path) {
        EXPECT_FALSE(Write(path)) << path;
        ASSERT_EQ(messages.ErrorCount(), 1U);
        EXPECT_EQ(messages.Errors().front().file, path);
        EXPECT_FALSE(messages.Errors().front().text.empty());
    }
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.Path())) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

mode_t ModeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
}

TEST(WriteDataSet, WritesTheTextAndNothingElse) {
    Target target;
    EXPECT_TRUE(target.Write(target.directory / "new.stp"));
    EXPECT_EQ(target.messages.ErrorCount(), 0U);
    EXPECT_EQ(ReadFile(target.directory / "new.stp"), exchange::ToExchangeText(target.dataSet));
    EXPECT_THAT(target.Files(), ElementsAre("new.stp"));
}

TEST(WriteDataSet, GivesANewFileTheUsualMode) {
    Target target;
    const mode_t mask = umask(027);
    EXPECT_TRUE(target.Write(target.directory / "new.stp"));
    umask(mask);
    EXPECT_EQ(ModeOf(target.directory / "new.stp") & 07777, 0640U);
}

// Another thread may create a file at the same time.
TEST(WriteDataSet, LeavesTheMaskOfTheProcessAlone) {
    Target target;
    const int before = maskCalls;
    EXPECT_TRUE(target.Write(target.directory / "new.stp"));
    EXPECT_TRUE(target.Write(target.directory / "new.stp"));
    EXPECT_EQ(maskCalls, before);
}

TEST(WriteDataSet, ReplacesAFileAndKeepsItsMode) {
    for (const mode_t mode : {0600U, 0664U, 0755U}) {
        Target target;
        const std::string path = target.directory.Write("old.stp", std::string(100000, 'x'));
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        EXPECT_TRUE(target.Write(path));
        EXPECT_EQ(ReadFile(path), exchange::ToExchangeText(target.dataSet));
        EXPECT_EQ(ModeOf(path) & 07777, mode);
        EXPECT_THAT(target.Files(), ElementsAre("old.stp"));
    }
}

// A program that has the old file open keeps reading it.
TEST(WriteDataSet, PutsANewFileInThePlaceOfTheOldOne) {
    Target target;
    const std::string path = target.directory.Write("old.stp", "old content");
    std::ifstream old(path);
    EXPECT_TRUE(target.Write(path));
    std::string content;
    std::getline(old, content);
    EXPECT_EQ(content, "old content");
}

TEST(WriteDataSet, WritesWhereASymbolicLinkPoints) {
    Target target;
    const std::string path = target.directory.Write("real.stp", "old");
    const std::string link = target.directory / "link.stp";
    ASSERT_EQ(symlink("real.stp", link.c_str()), 0);
    const std::string indirect = target.directory / "indirect.stp";
    ASSERT_EQ(symlink(link.c_str(), indirect.c_str()), 0);
    for (const std::string& through : {link, indirect}) {
        target.directory.Write("real.stp", "old");
        EXPECT_TRUE(target.Write(through));
        EXPECT_TRUE(S_ISLNK(ModeOf(link)));
        EXPECT_TRUE(S_ISLNK(ModeOf(indirect)));
        EXPECT_TRUE(S_ISREG(ModeOf(path)));
        EXPECT_EQ(ReadFile(path), exchange::ToExchangeText(target.dataSet));
    }
    EXPECT_THAT(target.Files(), ElementsAre("indirect.stp", "link.stp", "real.stp"));
}

TEST(WriteDataSet, WritesWhereADanglingLinkPoints) {
    Target target;
    ASSERT_TRUE(std::filesystem::create_directory(target.directory / "sub"));
    const std::string link = target.directory / "link.stp";
    ASSERT_EQ(symlink("sub/next.stp", link.c_str()), 0);
    ASSERT_EQ(symlink("new.stp", (target.directory / "sub/next.stp").c_str()), 0);
    EXPECT_TRUE(target.Write(link));
    EXPECT_TRUE(S_ISLNK(ModeOf(link)));
    EXPECT_TRUE(S_ISREG(ModeOf(target.directory / "sub/new.stp")));
    EXPECT_EQ(ReadFile(target.directory / "sub/new.stp"), exchange::ToExchangeText(target.dataSet));
    EXPECT_THAT(target.Files(), ElementsAre("link.stp", "sub"));
}

TEST(WriteDataSet, TellsOfLinksThatGoInACircle) {
    Target target;
    const std::string link = target.directory / "link.stp";
    ASSERT_EQ(symlink("link.stp", link.c_str()), 0);
    target.ExpectFailure(link);
    EXPECT_THAT(target.Files(), ElementsAre("link.stp"));
}

TEST(WriteDataSet, WritesIntoTheWorkingDirectory) {
    Target target;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(target.directory.Path());
    for (const char* name : {"plain.stp", "./dotted.stp"}) {
        EXPECT_TRUE(target.Write(name));
        EXPECT_TRUE(target.Write(name));
    }
    std::filesystem::current_path(before);
    EXPECT_THAT(target.Files(), ElementsAre("dotted.stp", "plain.stp"));
}

TEST(WriteDataSet, TakesTheLongestNameThatThereIs) {
    Target target;
    const std::string name(255, 'n');
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(target.Write(target.directory / name));
        EXPECT_EQ(ReadFile(target.directory / name), exchange::ToExchangeText(target.dataSet));
        EXPECT_THAT(target.Files(), ElementsAre(name));
    }
}

// ---- Files with several names

struct LinkedTarget : Target {
    std::string path =
        directory.Write("old.stp", "old content, longer than the new: " + std::string(10000, '.'));
    std::string other = directory / "other.stp";
    LinkedTarget() { EXPECT_EQ(link(path.c_str(), other.c_str()), 0); }
};

TEST(WriteDataSet, RefusesAFileWithFurtherNames) {
    LinkedTarget target;
    target.ExpectFailure(target.path);
    EXPECT_THAT(target.messages.Errors().front().text,
                HasSubstr("cannot be written: it has 1 further names (hard links)"));
    EXPECT_THAT(ReadFile(target.other), StartsWith("old content"));
    EXPECT_THAT(target.Files(), ElementsAre("old.stp", "other.stp"));
}

TEST(WriteDataSet, WritesAFileUnderAllItsNamesInPlace) {
    LinkedTarget target;
    EXPECT_TRUE(exchange::WriteDataSet(target.dataSet, target.path, target.messages, {true}));
    EXPECT_EQ(ReadFile(target.path), exchange::ToExchangeText(target.dataSet));
    EXPECT_EQ(ReadFile(target.other), exchange::ToExchangeText(target.dataSet));
    EXPECT_THAT(target.Files(), ElementsAre("old.stp", "other.stp"));
}

TEST(WriteDataSet, LeavesAFileInPlaceWhenThereIsNothingToWrite) {
    LinkedTarget target;
    New(target.dataSet, "REAL_HOLDER")->PutAttr("NUMBER", std::nan(""));
    EXPECT_FALSE(exchange::WriteDataSet(target.dataSet, target.path, target.messages, {true}));
    EXPECT_THAT(ReadFile(target.other), StartsWith("old content"));
}

TEST(WriteDataSet, MakesAFileThatIsToBeWrittenInPlace) {
    Target target;
    const std::string path = target.directory / "new.stp";
    EXPECT_TRUE(exchange::WriteDataSet(target.dataSet, path, target.messages, {true}));
    EXPECT_EQ(ReadFile(path), exchange::ToExchangeText(target.dataSet));
}

TEST(WriteDataSet, TellsOfADirectoryThatIsMissing) {
    Target target;
    target.ExpectFailure(target.directory / "missing/new.stp");
    EXPECT_THAT(target.Files(), ElementsAre());
}

TEST(WriteDataSet, TellsOfATargetThatIsADirectory) {
    Target target;
    target.ExpectFailure(target.directory.Path());
    EXPECT_TRUE(S_ISDIR(ModeOf(target.directory.Path())));
    EXPECT_THAT(target.Files(), ElementsAre());
}

// Drops the privileges of root while it exists.
class PlainUser {
  public:
    PlainUser() {
        if (geteuid() == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ~PlainUser() {
        if (getuid() == 0) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;
};

TEST(WriteDataSet, KeepsTheOwner) {
    if (geteuid() != 0) GTEST_SKIP() << "only the administrator may give files to others";
    Target target;
    const std::string path = target.directory.Write("old.stp", "old");
    ASSERT_EQ(chown(path.c_str(), 1234, 4321), 0);
    EXPECT_TRUE(target.Write(path));
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 4321U);
    EXPECT_EQ(target.messages.WarningCount(), 0U);
    EXPECT_EQ(ReadFile(path), exchange::ToExchangeText(target.dataSet));
}

TEST(WriteDataSet, TellsOfAnOwnerThatCannotBeKept) {
    if (geteuid() != 0) GTEST_SKIP() << "only the administrator can become somebody else";
    Target target;
    const std::string path = target.directory.Write("old.stp", "old");
    ASSERT_EQ(chown(path.c_str(), 1234, 4321), 0);
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(chmod(target.directory.Path().c_str(), 0777), 0);
    {
        const PlainUser user;
        EXPECT_TRUE(target.Write(path));
    }
    ASSERT_EQ(target.messages.WarningCount(), 1U);
    EXPECT_EQ(target.messages.Warnings().front().ToString(),
              path +
                  ": its owner cannot be kept: it was of user 1234, group 4321 and is now of "
                  "user 65534, group 0");
}

// Members of the new group need not have been members of the old one.
TEST(WriteDataSet, GivesAnotherGroupNoMoreThanOthersHave) {
    if (geteuid() != 0) GTEST_SKIP() << "only the administrator can become somebody else";
    Target target;
    const std::string path = target.directory.Write("old.stp", "old");
    ASSERT_EQ(chown(path.c_str(), 65534, 4321), 0);
    ASSERT_EQ(chmod(path.c_str(), 0664), 0);
    ASSERT_EQ(chmod(target.directory.Path().c_str(), 0777), 0);
    {
        const PlainUser user;
        EXPECT_TRUE(target.Write(path));
    }
    EXPECT_EQ(ModeOf(path) & 07777, 0644U);
    EXPECT_EQ(target.messages.WarningCount(), 1U);
}

TEST(WriteDataSet, LeavesATargetInAnUnwritableDirectoryAsItWas) {
    Target target;
    const std::string path = target.directory.Write("old.stp", "old content");
    ASSERT_EQ(chmod(target.directory.Path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    {
        const PlainUser user;
        target.ExpectFailure(path);
    }
    EXPECT_EQ(ReadFile(path), "old content");
    ASSERT_EQ(chmod(target.directory.Path().c_str(), 0755), 0);
    EXPECT_THAT(target.Files(), ElementsAre("old.stp"));
}

TEST(WriteDataSet, TellsOfAFullDevice) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "there is no /dev/full";
    Target target;
    // A user other than root cannot replace the device.
    const PlainUser user;
    target.ExpectFailure("/dev/full");
    EXPECT_TRUE(S_ISCHR(ModeOf("/dev/full")));
}

TEST(WriteDataSet, RefusesRealsThatAreNotFinite) {
    struct Case {
        const char* type;
        const char* attribute;
        SdaiPrimitiveH (*value)(double);
    };
    const Case table[] = {
        {"REAL_HOLDER", "NUMBER", [](double real) { return SdaiPrimitiveH(real); }},
        {"CHOICE_HOLDER", "CHOICE",
         [](double real) { return SdaiPrimitiveH(SdaiSelectH("LENGTH_MEASURE", real)); }},
        {"GRID_HOLDER", "GRID",
         [](double real) {
             auto* row = new SdaiAggrInstance;
             row->Append(1.0);
             row->Append(real);
             auto* grid = new SdaiAggrInstance;
             grid->Append(SdaiPrimitiveH::TakeOver(row));
             return SdaiPrimitiveH::TakeOver(grid);
         }},
    };
    const double infinity = std::numeric_limits<double>::infinity();
    for (const Case& tested : table) {
        for (const double real : {infinity, -infinity, std::nan("")}) {
            Target target;
            const std::string path = target.directory.Write("old.stp", "old content");
            New(target.dataSet, tested.type)->PutAttr(tested.attribute, tested.value(real));
            EXPECT_FALSE(target.Write(path));
            ASSERT_EQ(target.messages.ErrorCount(), 1U) << tested.type;
            EXPECT_THAT(target.messages.Errors()[0].text, HasSubstr("#2"));
            EXPECT_EQ(ReadFile(path), "old content");
            EXPECT_THAT(target.Files(), ElementsAre("old.stp"));
        }
    }
}

TEST(WriteDataSet, WritesLargeFiles) {
    Target target;
    for (int i = 0; i < 200000; ++i) New(target.dataSet, "ITEM")->PutAttr("NAME", SdaiString("n"));
    EXPECT_TRUE(target.Write(target.directory / "large.stp"));
    const std::string content = ReadFile(target.directory / "large.stp");
    EXPECT_GT(content.size(), 2000000U);
    EXPECT_TRUE(content == exchange::ToExchangeText(target.dataSet));
    EXPECT_THAT(content, HasSubstr("#200001=ITEM('n');"));
}

}  // namespace
