// Damaged files: rejected completely, each with a message and its place, never a crash; or read
// leniently as far as possible.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Allocations.h"
#include "Exchange.h"
#include "Orx.h"
#include "ParsedModel.h"
#include "TestSchema.h"

namespace {

using exchange::DataSet;
using exchange::Message;
using exchange::Messages;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

const std::string kHeader =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('test'),'2;1');\n"
    "FILE_NAME('name','2024-01-02T03:04:05',('author'),('firm'),'tool','system','');\n"
    "FILE_SCHEMA(('TEST_SCHEMA'));\nENDSEC;\n";
const std::string kEnd = "\nENDSEC;\nEND-ISO-10303-21;\n";

struct File {
    explicit File(const std::string& text, bool lenient = false)
        : dataSet(exchange::ParseDataSet(text, "bad.stp", TestSchemas(), {lenient, {}}, messages)) {
    }

    void ExpectRefused() const {
        EXPECT_GE(messages.ErrorCount(), 1U);
        EXPECT_EQ(dataSet.model, nullptr);
        for (const Message& error : messages.Errors()) {
            EXPECT_EQ(error.file, "bad.stp");
            EXPECT_FALSE(error.text.empty());
        }
    }
    Message FirstError() const {
        return messages.Errors().empty() ? Message{} : messages.Errors().front();
    }
    std::vector<unsigned long> Instances() const {
        std::vector<unsigned long> ids;
        dataSet.model->ForEachInstance(
            [&ids](const kor::Instance& instance) { ids.push_back(instance.Id()); });
        return ids;
    }
    SdaiPrimitiveH operator[](unsigned long id) const {
        SdaiEntityInstance* instance = dataSet.model->Find(id);
        EXPECT_NE(instance, nullptr) << "no instance #" << id;
        return instance;
    }

    Messages messages;
    DataSet dataSet;
};

std::string FileOf(const std::string& data) { return kHeader + "DATA;\n" + data + kEnd; }

// A text in which a "^", which is removed, marks a place.
struct Marked {
    explicit Marked(std::string marked) : text(std::move(marked)) {
        const std::size_t mark = text.find('^');
        if (mark == std::string::npos) return;
        text.erase(mark, 1);
        line = 1 + static_cast<std::uint64_t>(std::count(
                       text.begin(), text.begin() + static_cast<std::ptrdiff_t>(mark), '\n'));
        const std::size_t start = mark == 0 ? std::string::npos : text.rfind('\n', mark - 1);
        column = start == std::string::npos ? mark + 1 : mark - start;
    }

    std::string text;
    std::uint64_t line = 0;  // 0: no mark
    std::uint64_t column = 0;
};

enum class Place { Exact, Line };

// Whether a lenient reader keeps an instance. One with too many or too few values may be kept or
// not.
enum class Kept { No, Yes, Either };

void ExpectPlace(const Message& message, const Marked& expected, Place place) {
    if (expected.line == 0) return;
    EXPECT_EQ(message.line, expected.line) << message.ToString();
    if (place == Place::Exact) {
        EXPECT_EQ(message.column, expected.column) << message.ToString();
    } else {
        EXPECT_GE(message.column, 1U) << message.ToString();
    }
}

std::string Listed(const std::vector<Message>& messages) {
    std::string list;
    for (const Message& message : messages) list += message.ToString() + "\n";
    return list;
}

// ---- Wrong instances

struct BadInstance {
    const char* name;
    // The file has #10 before this text and #11 and #12 after it; a lenient reader keeps these
    // three. The error is at the "^".
    const char* data;
    const char* mentions;
    Place place = Place::Exact;
    Kept kept = Kept::No;
};

std::ostream& operator<<(std::ostream& stream, const BadInstance& bad) {
    return stream << bad.name;
}

class BadInstances : public testing::TestWithParam<BadInstance> {
  protected:
    static Marked TestFile() {
        return Marked(FileOf("#10=ITEM('before');\n" + std::string(GetParam().data) +
                             "\n#11=ITEM('after');\n#12=HOLDER(#10);"));
    }
};

TEST_P(BadInstances, AreRefusedWithTheirPlace) {
    const Marked marked = TestFile();
    const File file(marked.text);
    file.ExpectRefused();
    ASSERT_EQ(file.messages.ErrorCount(), 1U) << Listed(file.messages.Errors());
    ExpectPlace(file.FirstError(), marked, GetParam().place);
    EXPECT_THAT(file.FirstError().text, HasSubstr(GetParam().mentions));
}

TEST_P(BadInstances, AreLeftOutOfALenientReading) {
    const Marked marked = TestFile();
    const File file(marked.text, true);
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    ASSERT_EQ(file.messages.WarningCount(), 1U) << Listed(file.messages.Warnings());
    ExpectPlace(file.messages.Warnings()[0], marked, GetParam().place);
    EXPECT_THAT(file.messages.Warnings()[0].text, HasSubstr(GetParam().mentions));
    ASSERT_NE(file.dataSet.model, nullptr);
    const bool isKept = file.Instances().size() == 4;
    if (GetParam().kept != Kept::Either) {
        EXPECT_EQ(isKept, GetParam().kept == Kept::Yes);
    }
    if (isKept) {
        EXPECT_THAT(file.Instances(), ElementsAre(10, 1, 11, 12));
    } else {
        EXPECT_THAT(file.Instances(), ElementsAre(10, 11, 12));
    }
    EXPECT_EQ(InstanceIn(file[12].GetAttr("ITEM")), InstanceIn(file[10]));
}

INSTANTIATE_TEST_SUITE_P(
    Dangling, BadInstances,
    testing::Values(
        BadInstance{"Reference", "#1=HOLDER(^#99);", "#99", Place::Exact, Kept::Yes},
        BadInstance{"InList", "#1=HOLDERS((#10,\n  ^#99,#11));", "#99", Place::Exact, Kept::Yes},
        BadInstance{"InTyped", "#1=CHOOSER(ITEM_LIST((^#99)));", "#99", Place::Exact, Kept::Yes},
        BadInstance{"InSelect", "#1=CHOOSER( ^#99 );", "#99", Place::Exact, Kept::Yes},
        BadInstance{"InUndeclared", "#1=CURVE('c',((1.),(^#99)));", "#99", Place::Exact, Kept::Yes},
        BadInstance{"InComplex", "#1=(LEFT(^#99)BASE($));", "#99", Place::Exact, Kept::Yes},
        BadInstance{"LargeName", "#1=HOLDER(^#123456789012);", "#123456789012", Place::Exact,
                    Kept::Yes}),
    [](const auto& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Numbers, BadInstances,
    testing::Values(BadInstance{"HugeReal", "#1=NUMBERS((1.,^1.E999));", ""},
                    BadInstance{"HugeNegativeReal", "#1=NUMBERS((^-1.E309));", ""},
                    BadInstance{"HugeExponent", "#1=NUMBERS((^1.E99999999999999999999));", ""},
                    BadInstance{"HugeUndeclaredReal", "#1=CURVE(^1.8E308);", ""},
                    BadInstance{"HugeInteger", "#1=COUNTER(^9223372036854775808);", ""},
                    BadInstance{"HugeNegativeInteger", "#1=COUNTER(^-9223372036854775809);", ""},
                    BadInstance{"HugeUndeclaredInteger", "#1=CURVE(^100000000000000000000);", ""},
                    BadInstance{"TwoPoints", "#1=NUMBERS((^1.2.3));", "", Place::Line},
                    BadInstance{"NoExponent", "#1=NUMBERS((^1.E));", "", Place::Line},
                    BadInstance{"OnlyASignInTheExponent", "#1=NUMBERS((^1.E+));", "", Place::Line},
                    BadInstance{"OnlyASign", "#1=COUNTER(^-);", "", Place::Line},
                    BadInstance{"OnlyAPoint", "#1=NUMBERS((^.));", "", Place::Line}),
    [](const auto& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Layout, BadInstances,
    testing::Values(BadInstance{"OneParenthesisMore", "#1=ITEM('a')^);", ""},
                    BadInstance{"OneParenthesisLess", "#1=ITEM('a'^;", ""},
                    BadInstance{"OpenList", "#1=NUMBERS((1.,2.^;", ""},
                    BadInstance{"CommaAtTheEndOfAList", "#1=NUMBERS((1.,2.,^));", "a value"},
                    BadInstance{"NoCommaBetweenReals", "#1=NUMBERS((1. ^2.));", "')' expected"},
                    BadInstance{"OpenTyped", "#1=CHOOSER(LABEL('a'^;", ""},
                    BadInstance{"OpenComplex", "#1=(BASE($)LEFT($)^;", ""},
                    BadInstance{"NoEqualsSign", "#1 ^ITEM('a');", "="},
                    BadInstance{"NoParameters", "#1=ITEM^;", "("},
                    BadInstance{"NoComma", "#1=PAIR(1 ^2);", ","},
                    BadInstance{"EmptyParameter", "#1=PAIR(1,^,2);", ""},
                    BadInstance{"CommaAtTheEnd", "#1=PAIR(1,2,^);", ""},
                    BadInstance{"CommaAtTheBeginning", "#1=PAIR(^,1);", ""},
                    BadInstance{"NoInstanceName", "^ITEM('a');", ""},
                    BadInstance{"NoNumber", "^#=ITEM('a');", "", Place::Line},
                    BadInstance{"NoType", "#1=^'a';", ""}, BadInstance{"Nothing", "#1=^;", ""},
                    BadInstance{"NoPart", "#1=(BASE($)^'a');", ""},
                    BadInstance{"StrayCharacter", "#1=PAIR(1,^%);", ""},
                    BadInstance{"StrayByte", "#1=PAIR(1,^\xE9);", ""},
                    BadInstance{"OpenEnumeration", "#1=COLOURED(^.RED);", "", Place::Line},
                    BadInstance{"EmptyEnumeration", "#1=COLOURED(^..);", "", Place::Line},
                    BadInstance{"BadBinary", "#1=BINARY_HOLDER(^\"XYZ\");", "", Place::Line},
                    BadInstance{"EmptyTyped", "#1=CHOOSER(^LABEL());", "", Place::Line},
                    BadInstance{"TypedPair", "#1=CHOOSER(^LABEL('a','b'));", "", Place::Line}),
    [](const auto& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Attributes, BadInstances,
    testing::Values(
        BadInstance{"TooFew", "^#1=PAIR(1);", "PAIR", Place::Line, Kept::Either},
        BadInstance{"TooMany", "^#1=PAIR(1,2,3);", "PAIR", Place::Line, Kept::Either},
        BadInstance{"None", "^#1=PAIR();", "PAIR", Place::Line, Kept::Either},
        BadInstance{"TooManyWithInherited", "^#1=SPECIAL_ITEM('a',1,2);", "SPECIAL_ITEM",
                    Place::Line, Kept::Either},
        BadInstance{"TooFewWithInherited", "^#1=SPECIAL_ITEM('a');", "SPECIAL_ITEM", Place::Line,
                    Kept::Either},
        BadInstance{"TooManyInAPart", "^#1=(BASE($)LEFT($,$));", "LEFT", Place::Line, Kept::Either},
        BadInstance{"TooFewInAPart", "^#1=(BASE()LEFT($));", "BASE", Place::Line, Kept::Either}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(BadFiles, AMissingSemicolonIsAnError) {
    const Marked marked(FileOf("#1=ITEM('a');\n#2=ITEM('b')\n ^#3=ITEM('c');\n#4=ITEM('d');"));
    const File file(marked.text);
    file.ExpectRefused();
    ExpectPlace(file.FirstError(), marked, Place::Exact);
    EXPECT_THAT(file.FirstError().text, HasSubstr(";"));
}

TEST(BadFiles, InstanceNamesBeyond63BitsAreErrors) {
    for (const char* name : {"9223372036854775808", "18446744073709551615", "18446744073709551617",
                             "99999999999999999999"}) {
        SCOPED_TRACE(name);
        for (const char* data : {"#1=ITEM('a');\n#2=HOLDER(#^NAME);", "#^NAME=ITEM('a');"}) {
            std::string text = data;
            text.replace(text.find("NAME"), 4, name);
            const Marked marked(FileOf(text));
            const File file(marked.text);
            file.ExpectRefused();
            ASSERT_EQ(file.messages.ErrorCount(), 1U);
            ExpectPlace(file.FirstError(), marked, Place::Exact);
            EXPECT_THAT(file.FirstError().text,
                        HasSubstr("an instance name beyond 9223372036854775807"));
        }
    }
}

TEST(BadFiles, ALenientReaderNumbersGreatNamesAnew) {
    const Marked marked(
        FileOf("#1=HOLDER(#00099999999999999999999);\n"
               "^#99999999999999999999=ITEM('great');\n#3=HOLDER(#99999999999999999999);\n"
               "#88888888888888888888=ITEM('other');\n#2=ITEM('two');\n"
               "#5=HOLDER(#77777777777777777777);"));
    const File file(marked.text, true);
    ASSERT_NE(file.dataSet.model, nullptr);
    // 4 and 6 are the smallest numbers not used in the file.
    EXPECT_THAT(file.Instances(), ElementsAre(1, 4, 3, 6, 2, 5));
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(file[1].GetAttr("ITEM")),
              file.dataSet.model->Find(4));
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(file[3].GetAttr("ITEM")),
              file.dataSet.model->Find(4));
    EXPECT_FALSE(file[5].GetAttr("ITEM").exists());
    EXPECT_EQ(file.dataSet.model->Find(9223372036854775808U), nullptr);
    ASSERT_EQ(file.messages.WarningCount(), 3U) << Listed(file.messages.Warnings());
    ExpectPlace(file.messages.Warnings()[0], marked, Place::Exact);
    EXPECT_THAT(file.messages.Warnings()[0].text, HasSubstr("it is #4 now"));
    EXPECT_THAT(file.messages.Warnings()[1].text, HasSubstr("it is #6 now"));
    EXPECT_EQ(file.messages.Warnings()[2].text, "there is no instance #77777777777777777777");
    const std::string written = exchange::ToExchangeText(file.dataSet);
    EXPECT_THAT(written, HasSubstr("#4=ITEM('great');"));
    File(written).dataSet.model->Find(6);
}

TEST(BadFiles, ALenientReaderRenumbersGreatNamesInAnchorsAndScopes) {
    std::string text = FileOf(
        "#99999999999999999999=ITEM('great');\n#2=&SCOPE\n#0077777777777777777777=ITEM('inner');\n"
        "ENDSCOPE /#77777777777777777777/ ITEM('two');");
    text.insert(text.find("DATA;"),
                "ANCHOR;\n<a>=('#99999999999999999999',#99999999999999999999);\n"
                "<b>=#88888888888888888888;\n<c>=#2;\nENDSEC;\n");
    const File file(text, true);
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_THAT(file.Instances(), ElementsAre(1, 3, 2));
    ASSERT_EQ(file.messages.WarningCount(), 3U) << Listed(file.messages.Warnings());
    EXPECT_THAT(file.messages.Warnings()[0].text, HasSubstr("it is #1 now"));
    EXPECT_THAT(file.messages.Warnings()[1].text, HasSubstr("it is #3 now"));
    EXPECT_EQ(file.messages.Warnings()[2].text, "there is no instance #88888888888888888888");
    const std::string written = exchange::ToExchangeText(file.dataSet);
    EXPECT_THAT(written,
                HasSubstr("ANCHOR;\n<a>=('#99999999999999999999',#1);\n<c>=#2;\nENDSEC;\n"));
    EXPECT_THAT(written, HasSubstr("ENDSCOPE /#3/ ITEM('two');"));
    EXPECT_EQ(File(written).messages.ErrorCount(), 0U);
}

// Nor do new instances of the model get such a number.
TEST(BadFiles, ALenientReaderGivesGreatNamesNoNumberOfAnExternalReference) {
    std::string text =
        FileOf("#99999999999999999999=ITEM('great');\n#2=ITEM('two');\n#4=ITEM('four');");
    text.insert(text.find("DATA;"), "REFERENCE;\n#1=<x#y>;\n#005=<x#z>;\n@6=<x#v>;\nENDSEC;\n");
    const File file(text, true);
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_THAT(file.Instances(), ElementsAre(3, 2, 4));
    const SdaiEntity* item = file.dataSet.model->GetEntityDefinition("ITEM");
    // #5 is an external reference; @6 names a value, not an instance.
    EXPECT_EQ(item->CreateEntityInstance(file.dataSet.model.get())->GetInstanceNameId(), 6U);
    EXPECT_EQ(item->CreateEntityInstance(file.dataSet.model.get())->GetInstanceNameId(), 7U);
    const std::string written = exchange::ToExchangeText(file.dataSet);
    EXPECT_THAT(File(written).Instances(), ElementsAre(3, 2, 4, 6, 7)) << written;
}

// ---- References to what is missing

TEST(BadFiles, MissingInstancesAreToldBehindOtherErrors) {
    for (const char* data : {"#1=ITEM('it's');\n#5=HOLDER(^#77);\n#6=ITEM('see #77');",
                             "#1=ITEM(<3);\n#5=HOLDER(^#77);", "#1=;\n#5=HOLDER(^#77);\n#6=;",
                             "#99999999999999999999=ITEM('a');\n#5=HOLDER(^#77);"}) {
        SCOPED_TRACE(data);
        const Marked marked(FileOf(data));
        const File file(marked.text);
        file.ExpectRefused();
        ASSERT_GE(file.messages.ErrorCount(), 2U) << Listed(file.messages.Errors());
        const auto isMissing = [](const Message& message) {
            return message.text.starts_with("there is no instance #77");
        };
        const std::vector<Message>& errors = file.messages.Errors();
        ASSERT_EQ(std::count_if(errors.begin(), errors.end(), isMissing), 1);
        ExpectPlace(*std::find_if(errors.begin(), errors.end(), isMissing), marked, Place::Exact);
    }
}

TEST(BadFiles, MissingInstancesAreToldUpToTheEndOfTheExchangeFile) {
    const Marked marked(FileOf("#5=HOLDER(^#77);") + "junk #77");
    const File file(marked.text);
    file.ExpectRefused();
    ASSERT_EQ(file.messages.ErrorCount(), 1U) << Listed(file.messages.Errors());
    ExpectPlace(file.FirstError(), marked, Place::Exact);
}

// What refers to a broken instance is right in itself, and so is what refers to the owner of a
// scope with a broken instance.
TEST(BadFiles, TheOwnerOfABrokenScopeIsNotMissing) {
    for (const char* scope : {"#2=ITEM('b';\nENDSCOPE HOLDER(#2);", "#2=ITEM('b');\nHOLDER(#2);",
                              "#2=&SCOPE\n#3=ITEM(;\nENDSCOPE ITEM('b');\nENDSCOPE HOLDER(#2);"}) {
        const File file(FileOf("#1=&SCOPE\n" + std::string(scope) + "\n#5=HOLDER(#1);"));
        file.ExpectRefused();
        EXPECT_THAT(Listed(file.messages.Errors()),
                    testing::Not(HasSubstr("there is no instance")));
    }
}

TEST(BadFiles, AScopeWithoutItsOwnerIsNone) {
    const File file(FileOf("#1=&SCOPE\n#2=ITEM('b');\nENDSCOPE HOLDER(;\n#3=ITEM('c');"), true);
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_THAT(file.Instances(), ElementsAre(2, 3));
    EXPECT_THAT(exchange::ToExchangeText(file.dataSet), testing::Not(HasSubstr("SCOPE")));
}

// ---- Memory

// The values of an instance belong to the model from its creation on, whatever fails after that.
TEST(BadFiles, AreReadOrNotWhereMemoryRunsOut) {
    const std::string text = FileOf(
        "#99999999999999999999=ITEM('a text of more than fourteen characters');\n"
        "#1=HOLDER(#99999999999999999999);\n#2=CHOOSER(LABEL('another text, and as long'));\n"
        "#3=OWN('one of five texts','two of five texts','three of five texts','four of five "
        "texts','five of five texts');\n#4=OWN(SOME_LONG_TYPE_NAME('another text, and as long'));\n"
        "#5=OWN(SOME_LONG_TYPE_NAME(#9));\n#6=OWN(SOME_LONG_TYPE_NAME(*));\n"
        "#7=OWN(SOME_LONG_TYPE_NAME(('another text, and as long',1)));\n#9=ITEM('nine');");
    const std::string expected = exchange::ToExchangeText(File(text, true).dataSet);
    bool failed = true;
    for (long succeeding = 0; failed; ++succeeding) {
        std::optional<File> file;
        {
            const FailingAllocations failing(succeeding, FailingAllocations::Extent::Once);
            try {
                file.emplace(text, true);
            } catch (const std::bad_alloc&) {
            }
            failed = failing.HaveFailed();
        }
        if (file.has_value()) {
            EXPECT_EQ(exchange::ToExchangeText(file->dataSet), expected) << succeeding;
        }
    }
}

TEST(BadFiles, TellTheColumnInBytes) {
    // Characters of one, two and four bytes come before the reference.
    const Marked marked(FileOf("#1=CURVE('\xE9\xC3\xA9\xF0\x9F\x98\x80',\t^#99);"));
    const File file(marked.text);
    file.ExpectRefused();
    ExpectPlace(file.FirstError(), marked, Place::Exact);
}

TEST(BadFiles, CountLinesOfAllSystems) {
    for (const char* lineEnd : {"\n", "\r\n", "\r"}) {
        std::string text =
            FileOf("#1=ITEM('broken\nover lines');\n/* comment\n\n */ #2=HOLDER(#9);");
        for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
            text.replace(at, 1, lineEnd);
            at += std::string(lineEnd).size();
        }
        const File file(text);
        file.ExpectRefused();
        // The data begin in line 8.
        EXPECT_EQ(file.FirstError().line, 12U);
        EXPECT_EQ(file.FirstError().column, 15U);
    }
}

TEST(BadFiles, ASecondInstanceOfANameIsAnError) {
    const Marked marked(FileOf("#1=ITEM('a');\n#2=HOLDER(#1);\n  ^#1=ITEM('b');\n#3=ITEM('c');"));
    const File file(marked.text);
    file.ExpectRefused();
    ASSERT_EQ(file.messages.ErrorCount(), 1U);
    ExpectPlace(file.FirstError(), marked, Place::Exact);
    EXPECT_THAT(file.FirstError().text, HasSubstr("#1"));

    const File lenient(marked.text, true);
    ASSERT_EQ(lenient.messages.WarningCount(), 1U);
    ExpectPlace(lenient.messages.Warnings()[0], marked, Place::Exact);
    ASSERT_NE(lenient.dataSet.model, nullptr);
    EXPECT_THAT(lenient.Instances(), ElementsAre(1, 2, 3));
    EXPECT_EQ(TextIn(lenient[1].GetAttr("NAME")), "a") << "the first one stays";
}

TEST(BadFiles, ADuplicateInAnotherDataSectionIsAnError) {
    const Marked marked(kHeader +
                        "DATA('a',('TEST_SCHEMA'));\n#1=ITEM('a');\nENDSEC;\n"
                        "DATA('b',('TEST_SCHEMA'));\n^#1=ITEM('b');" +
                        kEnd);
    const File file(marked.text);
    file.ExpectRefused();
    ExpectPlace(file.FirstError(), marked, Place::Exact);
}

TEST(BadFiles, DanglingReferencesAreUnsetInALenientReading) {
    const File file(FileOf("#1=HOLDER(#99);#2=HOLDERS((#3,#98,#3));#3=ITEM('a');"
                           "#4=CHOOSER(#97);#5=CURVE(#96,(#95,'x'));#6=CHOOSER(ITEM_LIST((#94)));"),
                    true);
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    EXPECT_EQ(file.messages.WarningCount(), 6U);
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_TRUE(IsUnset(file[1].GetAttr("ITEM")));
    EXPECT_FALSE(file[1].TestAttr("ITEM"));
    const SdaiAggrInstance* items = file[2].GetAttr("ITEMS");
    ASSERT_EQ(items->GetMemberCount(), 3);
    EXPECT_EQ(items->GetInstanceMember(0), InstanceIn(file[3]));
    EXPECT_TRUE(IsUnset(items->GetMember(1)));
    EXPECT_EQ(items->GetInstanceMember(2), InstanceIn(file[3]));
    EXPECT_TRUE(IsUnset(file[4].GetAttr("CHOICE")));
    const std::string text = exchange::ToExchangeText(file.dataSet);
    EXPECT_THAT(text, AllOf(HasSubstr("#1=HOLDER($);"), HasSubstr("#2=HOLDERS((#3,$,#3));"),
                            HasSubstr("#4=CHOOSER($);"), HasSubstr("#5=CURVE($,($,'x'));")));
}

// A reference to an instance that was dropped dangles.
TEST(BadFiles, ABrokenInstanceLeavesDanglingReferences) {
    const File file(FileOf("#1=HOLDER(#2);\n#2=ITEM('a';\n#3=HOLDER(#2);"), true);
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    EXPECT_EQ(file.messages.WarningCount(), 3U) << Listed(file.messages.Warnings());
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_THAT(file.Instances(), ElementsAre(1, 3));
    EXPECT_TRUE(IsUnset(file[1].GetAttr("ITEM")));
    EXPECT_TRUE(IsUnset(file[3].GetAttr("ITEM")));
}

std::vector<std::uint64_t> Lines(const std::vector<Message>& messages) {
    std::vector<std::uint64_t> lines;
    for (const Message& message : messages) lines.push_back(message.line);
    return lines;
}

TEST(BadFiles, TellEveryError) {
    const File file(
        FileOf("#1=PAIR(1);\n#2=ITEM('a'));\n#3=ITEM('ok');\n#4=PAIR(1,2;\n"
               "#5=NUMBERS((1.E999));\n#6=HOLDER(#3);\n#7=ITEM(?);"));
    file.ExpectRefused();
    EXPECT_THAT(Lines(file.messages.Errors()), ElementsAre(8, 9, 11, 12, 14));
}

TEST(BadFiles, TellWhatFollowsADuplicate) {
    const File file(FileOf("#1=ITEM('a');\n#1=ITEM('again');\n#2=PAIR(1);\n#3=ITEM('c');"));
    file.ExpectRefused();
    EXPECT_THAT(Lines(file.messages.Errors()), ElementsAre(9, 10));
}

TEST(BadFiles, TellDanglingReferencesAmongOtherErrors) {
    const File file(FileOf("#1=HOLDER(#99);\n#2=PAIR(1);\n#3=HOLDER(#98);"));
    file.ExpectRefused();
    EXPECT_THAT(Lines(file.messages.Errors()), testing::UnorderedElementsAre(8, 9, 10));
}

// A lenient reader continues with the next instance, whatever separates the two.
TEST(BadFiles, TheInstanceBehindABrokenOneIsRead) {
    for (const char* between :
         {"", "\n", " \t\r\n", "/* a comment */", "\n/* a; comment */\n", "\\N\\"}) {
        for (const char* broken :
             {"#1=PAIR(1;", "#1=ITEM('a'));", "#1=;", "ITEM('a');", "#10=ITEM('again');",
              "#1=NUMBERS((1.E999));", "#1=ITEM('/* no comment' 'x');"}) {
            const File file(FileOf("#10=ITEM('before');\n" + std::string(broken) + between +
                                   "#11=ITEM('after');#12=ITEM('last');"),
                            true);
            ASSERT_NE(file.dataSet.model, nullptr);
            EXPECT_THAT(file.Instances(), ElementsAre(10, 11, 12)) << broken << between;
        }
    }
}

TEST(BadFiles, KeepTheFirstTwentyErrorsAndCountAll) {
    std::string data;
    for (int i = 1; i <= 30; ++i) data += "#" + std::to_string(i) + "=PAIR();\n";
    const File file(FileOf(data));
    file.ExpectRefused();
    EXPECT_EQ(file.messages.ErrorCount(), 30U);
    ASSERT_THAT(file.messages.Errors(), SizeIs(20));
    EXPECT_EQ(file.FirstError().line, 8U);
    EXPECT_EQ(file.messages.Errors().back().line, 27U);
    const File lenient(FileOf(data), true);
    EXPECT_EQ(lenient.messages.WarningCount(), 30U);
    EXPECT_THAT(lenient.messages.Warnings(), SizeIs(20));
}

TEST(BadFiles, KeepTheFirstTwentyDanglingReferencesAndCountAll) {
    std::string data;
    for (int i = 1; i <= 30; ++i) {
        data += "#" + std::to_string(i) + "=HOLDER(#" + std::to_string(1000 - i) + ");\n";
    }
    const File file(FileOf(data));
    file.ExpectRefused();
    EXPECT_EQ(file.messages.ErrorCount(), 30U);
    ASSERT_THAT(file.messages.Errors(), SizeIs(20));
    EXPECT_EQ(file.FirstError().line, 8U);
    EXPECT_EQ(file.messages.Errors().back().line, 27U);
}

// ---- Texts

TEST(BadFiles, ATextThatDoesNotEndIsAnError) {
    const Marked marked(FileOf("#1=ITEM('a');\n#2=ITEM(^'b);\n#3=ITEM($);"));
    const File file(marked.text);
    file.ExpectRefused();
    ExpectPlace(file.FirstError(), marked, Place::Exact);
}

TEST(BadFiles, ACommentThatDoesNotEndIsAnError) {
    const Marked marked(FileOf("#1=ITEM('a');\n ^/* open\n#3=ITEM($);"));
    const File file(marked.text);
    file.ExpectRefused();
    ExpectPlace(file.FirstError(), marked, Place::Exact);
}

TEST(BadFiles, ADirectiveThatCannotBeDecodedIsTold) {
    for (const char* text : {"ab^\\Q", "^\\X\\G1", "it''s ^\\X2\\00E", "\xC3\xA9^\\X4\\00\\X0\\"}) {
        const Marked marked(FileOf("#1=ITEM($);\n#2=ITEM('" + std::string(text) + "');"));
        const File file(marked.text);
        ASSERT_EQ(file.messages.ErrorCount() + file.messages.WarningCount(), 1U) << text;
        const Message message =
            file.messages.ErrorCount() > 0 ? file.FirstError() : file.messages.Warnings()[0];
        ExpectPlace(message, marked, Place::Exact);
    }
}

TEST(BadFiles, ADirectiveThatCannotBeDecodedIsToldOnce) {
    const File file(FileOf("#1=ITEM('\\Q');\n#2=HOLDER(#99);"), true);
    EXPECT_THAT(Lines(file.messages.Warnings()), ElementsAre(8, 9));
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_EQ(TextIn(file[1].GetAttr("NAME")), "\\Q") << "it stays as it is";
}

TEST(BadFiles, ADirectiveInALaterLineOfATextHasItsPlace) {
    const Marked marked(FileOf("#1=ITEM('first\nsecond\n it''s ^\\Q');"));
    const File file(marked.text);
    ASSERT_EQ(file.messages.ErrorCount() + file.messages.WarningCount(), 1U);
    ExpectPlace(file.messages.ErrorCount() > 0 ? file.FirstError() : file.messages.Warnings()[0],
                marked, Place::Exact);
}

// ---- Whole files

struct BadFile {
    const char* name;
    std::string text;  // the error is at the "^"
    const char* mentions;
    Place place = Place::Exact;
};

std::ostream& operator<<(std::ostream& stream, const BadFile& bad) { return stream << bad.name; }

class WholeFiles : public testing::TestWithParam<BadFile> {};

TEST_P(WholeFiles, AreRefused) {
    const Marked marked(GetParam().text);
    const File file(marked.text);
    file.ExpectRefused();
    ASSERT_GE(file.messages.ErrorCount(), 1U);
    ExpectPlace(file.FirstError(), marked, GetParam().place);
    EXPECT_THAT(file.FirstError().text, HasSubstr(GetParam().mentions));
}

TEST_P(WholeFiles, AreToldInALenientReading) {
    const File file(Marked(GetParam().text).text, true);
    EXPECT_GE(file.messages.ErrorCount() + file.messages.WarningCount(), 1U);
    EXPECT_EQ(file.messages.ErrorCount() > 0, file.dataSet.model == nullptr);
}

const char kData[] = "DATA;\n#1=ITEM('a');\nENDSEC;\n";

INSTANTIATE_TEST_SUITE_P(
    BadFiles, WholeFiles,
    testing::Values(
        BadFile{"Empty", "", ""},  //
        BadFile{"Blank", " \n\t\n", ""}, BadFile{"OnlyAComment", "/* ISO-10303-21; */", ""},
        BadFile{"AnotherFormat", "^<?xml version='1.0'?><iso_10303_28/>", "ISO-10303-21"},
        BadFile{"Express", "^SCHEMA a; END_SCHEMA;", "ISO-10303-21"},
        BadFile{"NoStart",
                "^HEADER;\nFILE_SCHEMA(('TEST_SCHEMA'));\nENDSEC;\n" + std::string(kData) +
                    "END-ISO-10303-21;",
                "ISO-10303-21"},
        BadFile{"NoHeader", "ISO-10303-21;\n^" + std::string(kData) + "END-ISO-10303-21;",
                "HEADER"},
        BadFile{"NoSchema",
                "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nENDSEC;\n" +
                    std::string(kData) + "END-ISO-10303-21;",
                "FILE_SCHEMA"},
        BadFile{"NoSchemaName",
                "ISO-10303-21;\nHEADER;\n^FILE_SCHEMA(());\nENDSEC;\n" + std::string(kData) +
                    "END-ISO-10303-21;",
                "", Place::Line},
        BadFile{"UnsetSchema",
                "ISO-10303-21;\nHEADER;\n^FILE_SCHEMA($);\nENDSEC;\n" + std::string(kData) +
                    "END-ISO-10303-21;",
                "", Place::Line},
        BadFile{"EmptySchemaName",
                "ISO-10303-21;\nHEADER;\n^FILE_SCHEMA((''));\nENDSEC;\n" + std::string(kData) +
                    "END-ISO-10303-21;",
                "", Place::Line},
        BadFile{"UnknownSchema",
                "ISO-10303-21;\nHEADER;\nFILE_SCHEMA((^'NO_SUCH_THING { 1 2 }'));\nENDSEC;\n" +
                    std::string(kData) + "END-ISO-10303-21;",
                "NO_SUCH_THING", Place::Line},
        BadFile{"MisspeltSchema",
                "ISO-10303-21;\nHEADER;\nFILE_SCHEMA((^'AUTOMOTIVE_DESING'));\nENDSEC;\n" +
                    std::string(kData) + "END-ISO-10303-21;",
                "did you mean 'AUTOMOTIVE_DESIGN'", Place::Line},
        BadFile{"NoEndOfHeader",
                "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('TEST_SCHEMA'));\n^" + std::string(kData) +
                    "END-ISO-10303-21;",
                "", Place::Line},
        BadFile{"NoEndOfData", kHeader + "DATA;\n#1=ITEM('a');\n^END-ISO-10303-21;", "ENDSEC",
                Place::Line},
        BadFile{"NoEnd", kHeader + kData, "END-ISO-10303-21"},
        BadFile{"NoEndAtAll", kHeader + "DATA;\n#1=ITEM('a');\n", ""},
        BadFile{"UnknownSection", kHeader + "^THINGS;\nENDSEC;\nEND-ISO-10303-21;", "",
                Place::Line},
        BadFile{"BrokenHeaderRecord",
                "ISO-10303-21;\nHEADER;\nFILE_NAME('a',^;\nFILE_SCHEMA(('TEST_SCHEMA'));\n"
                "ENDSEC;\n" +
                    std::string(kData) + "END-ISO-10303-21;",
                ""},
        BadFile{"Zeros", std::string(100000, '\0'), ""},
        BadFile{"Picture", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\1\0", 20), ""}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(BadFiles, BytesWithoutSenseAreRefused) {
    std::mt19937 random(3);
    std::string bytes;
    for (int i = 0; i < 1 << 20; ++i) bytes += static_cast<char>(random() % 256);
    for (const std::string& text : {bytes, kHeader + bytes, kHeader + "DATA;\n" + bytes}) {
        File(text).ExpectRefused();
        File(text, true);
    }
}

TEST(BadFiles, MissingFilesAndDirectoriesAreRefused) {
    const TemporaryDirectory directory;
    for (const std::string& path : {directory / "missing.stp", directory.Path()}) {
        for (const bool lenient : {false, true}) {
            Messages messages;
            const DataSet dataSet =
                exchange::ReadDataSet(path, TestSchemas(), {lenient, {}}, messages);
            EXPECT_EQ(dataSet.model, nullptr);
            ASSERT_EQ(messages.ErrorCount(), 1U) << path;
            EXPECT_EQ(messages.Errors()[0].file, path);
            EXPECT_EQ(messages.Errors()[0].line, 0U);
        }
    }
}

TEST(BadFiles, AnEmptyFileIsRefused) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("empty.stp", "");
    Messages messages;
    EXPECT_EQ(exchange::ReadDataSet(path, TestSchemas(), {}, messages).model, nullptr);
    EXPECT_EQ(messages.ErrorCount(), 1U);
}

// ---- Truncated and damaged files

const std::string kSmall =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('it''s'),'2;1');\n"
    "FILE_NAME('n','t',('a'),('o'),'p','s','');\nFILE_SCHEMA(('TEST_SCHEMA'));\nENDSEC;\n"
    "DATA;\n#1=ITEM('caf\\X\\E9 \\X2\\03B1\\X0\\');/* a comment */\n#2=PAIR(-1,+2);\n"
    "#3=(BASE('b')LEFT(#1));\n#4=CHOOSER(ITEM_LIST((#1,#1)));\n#5=NUMBERS((1.5E-3,-5.,2));\n"
    "#6=CURVE(\"1F\",.RED.,*,$,(()));\nENDSEC;\nEND-ISO-10303-21;";

TEST(BadFiles, EveryPrefixIsRefused) {
    const std::string& text = kSmall;
    const File whole(text);
    EXPECT_EQ(whole.messages.ErrorCount(), 0U);
    EXPECT_EQ(whole.messages.WarningCount(), 0U);
    ASSERT_NE(whole.dataSet.model, nullptr);
    EXPECT_EQ(whole.dataSet.model->InstanceCount(), 6U);
    for (std::size_t length = 0; length < text.size(); ++length) {
        SCOPED_TRACE(text.substr(0, length));
        const File file(text.substr(0, length));
        file.ExpectRefused();
        const Message error = file.FirstError();
        const Marked end(text.substr(0, length) + "^");
        // The place is within the file.
        EXPECT_LE(error.line, end.line);
        if (error.line == end.line) {
            EXPECT_LE(error.column, end.column);
        }
    }
}

// A type takes many times the memory of its text.
TEST(BadFiles, MoreTypesThanAnySchemaHasAreRefused) {
    std::string data;
    for (int id = 1; id <= 10'000; ++id) {
        data += '#' + std::to_string(id) + "=T" + std::to_string(id) + "();";
    }
    EXPECT_NE(File(FileOf(data)).dataSet.model, nullptr);
    const File file(FileOf(data + "#10001=T10001();"));
    file.ExpectRefused();
    EXPECT_THAT(file.FirstError().text, HasSubstr("more than 10000 entity types"));
}

// Each combination inherits what its parts inherit.
TEST(BadFiles, CombinationsOfTypesThatInheritTooMuchAreRefused) {
    std::string schema = "SCHEMA deep; ENTITY e0; END_ENTITY;\n";
    for (int i = 1; i <= 900; ++i) {
        schema += "ENTITY e" + std::to_string(i) + " SUBTYPE OF (e" + std::to_string(i - 1) +
                  "); a" + std::to_string(i) + " : OPTIONAL INTEGER; END_ENTITY;\n";
    }
    Messages messages;
    exchange::SchemaCatalog schemas;
    for (auto& parsed : exchange::ParseSchemas(schema + "END_SCHEMA;", "deep", messages)) {
        schemas.Add(parsed);
    }
    ASSERT_EQ(messages.ErrorCount(), 0U);
    std::string data;
    for (int i = 1; i <= 2'000; ++i) {
        data += '#' + std::to_string(i) + "=(E900($)T" + std::to_string(i) + "());\n";
    }
    const DataSet dataSet = exchange::ParseDataSet(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('DEEP'));ENDSEC;DATA;" + data + kEnd, "bad.stp", schemas,
        {}, messages);
    EXPECT_EQ(dataSet.model, nullptr);
    ASSERT_GE(messages.ErrorCount(), 1U);
    EXPECT_THAT(messages.Errors().front().text, HasSubstr("entity types and combinations"));
}

TEST(BadFiles, TextsBeyondTheLimitAreRefused) {
    exchange::ReadOptions options;
    options.longestText = 1000;
    const auto read = [&options](const std::string& value, Messages& messages) {
        return exchange::ParseDataSet(FileOf("#1=ITEM('a');\n#2=OWN(" + value + ");\n"), "bad.stp",
                                      TestSchemas(), options, messages);
    };
    const std::string digits(998, '0');
    for (const std::string& fits :
         {'\'' + std::string(1000, 'x') + '\'', '\'' + digits + "\\\\'", '"' + digits + "00\""}) {
        Messages messages;
        EXPECT_NE(read(fits, messages).model, nullptr) << fits;
    }
    for (const std::string& tooLong :
         {'\'' + std::string(1001, 'x') + '\'', '\'' + std::string(1001, '\\') + "\\'",
          '\'' + digits + "\\\\0'", '"' + digits + "000\"",
          '\'' + std::string(100'000, 'x') + "\xE9'"}) {
        Messages messages;
        EXPECT_EQ(read(tooLong, messages).model, nullptr);
        ASSERT_EQ(messages.ErrorCount(), 1U);
        EXPECT_EQ(messages.Errors().front().text, "a string or binary of more than 1000 bytes");
        EXPECT_EQ(messages.Errors().front().column, 8U);
    }
    // What follows has its place.
    std::string lines = "'";
    for (int i = 0; i < 300; ++i) lines += "aaaa\n";
    Messages messages;
    EXPECT_EQ(read(lines + "');\n#3=ITEM(;\n#4=OWN('b'", messages).model, nullptr);
    ASSERT_EQ(messages.ErrorCount(), 2U);
    // In the lines before: the header, DATA, #1, and #2 with its 300 breaks.
    EXPECT_EQ(messages.Errors()[1].line, 6U + 1 + 1 + 301 + 1);
    EXPECT_EQ(messages.Errors()[1].column, 9U);
}

TEST(BadFiles, MoreCombinationsOfTypesThanAnySchemaHasAreRefused) {
    std::string data;
    int id = 0;
    for (int first = 1; first < 400; ++first) {
        for (int second = 0; second < first; ++second) {
            data += '#' + std::to_string(++id) + "=(T" + std::to_string(first) + "()T" +
                    std::to_string(second) + "());";
        }
    }
    const File file(FileOf(data));
    file.ExpectRefused();
    EXPECT_THAT(file.FirstError().text, HasSubstr("more than 10000 entity types"));
}

TEST(BadFiles, EveryPrefixOfAFileOnDiskIsRefused) {
    const TemporaryDirectory directory;
    const std::string& text = kSmall;
    for (std::size_t length = 0; length < text.size(); ++length) {
        const std::string path = directory.Write("prefix.stp", text.substr(0, length));
        Messages messages;
        EXPECT_EQ(exchange::ReadDataSet(path, TestSchemas(), {}, messages).model, nullptr);
        EXPECT_GE(messages.ErrorCount(), 1U);
    }
}

TEST(BadFiles, ALenientReaderTakesWhatAPrefixHas) {
    const std::string& text = kSmall;
    const std::size_t data = text.find("DATA;") + 5;
    for (std::size_t length = 0; length < text.size(); ++length) {
        SCOPED_TRACE(text.substr(0, length));
        const std::string prefix = text.substr(0, length);
        const File file(prefix, true);
        EXPECT_GE(file.messages.ErrorCount() + file.messages.WarningCount(), 1U);
        if (length < data) continue;
        EXPECT_EQ(file.messages.ErrorCount(), 0U);
        ASSERT_NE(file.dataSet.model, nullptr);
        // An instance of which only the semicolon is missing may be read or not.
        const std::size_t end = prefix.find("ENDSEC;", data);
        const std::string instances = prefix.substr(data, end - data);
        const auto complete =
            static_cast<std::size_t>(std::count(instances.begin(), instances.end(), ';'));
        const std::size_t read = file.Instances().size();
        EXPECT_TRUE(read == complete || (read == complete + 1 && prefix.back() == ')')) << read;
    }
}

// Whatever a byte is replaced by, the result is a model or errors, never both and never neither.
TEST(BadFiles, DamagedBytesAreSurvived) {
    const std::string& text = kSmall;
    const std::string replacements =
        "'\"();,#$*.=/\\&!@<>{}+-019AEX \n\t\x7F\xC3\xFF" + std::string(1, '\0');
    for (std::size_t at = 0; at < text.size(); ++at) {
        for (const char replacement : replacements) {
            std::string damaged = text;
            damaged[at] = replacement;
            const File file(damaged);
            ASSERT_EQ(file.dataSet.model == nullptr, file.messages.ErrorCount() > 0) << damaged;
            if (file.dataSet.model != nullptr) exchange::ToExchangeText(file.dataSet);
            const File lenient(damaged, true);
            ASSERT_EQ(lenient.dataSet.model == nullptr, lenient.messages.ErrorCount() > 0)
                << damaged;
            if (file.messages.ErrorCount() > 0) {
                EXPECT_GE(lenient.messages.ErrorCount() + lenient.messages.WarningCount(), 1U);
            }
        }
    }
}

TEST(BadFiles, RemovedAndRepeatedPiecesAreSurvived) {
    const std::string& text = kSmall;
    std::mt19937 random(17);
    for (int i = 0; i < 4000; ++i) {
        std::string damaged = text;
        for (int pieces = static_cast<int>(random() % 3); pieces >= 0; --pieces) {
            const std::size_t at = random() % damaged.size();
            const std::size_t length = random() % 30;
            if (random() % 2 == 0) {
                damaged.erase(at, length);
            } else {
                damaged.insert(random() % damaged.size(), damaged.substr(at, length));
            }
            if (damaged.empty()) damaged = text;
        }
        const File file(damaged);
        ASSERT_EQ(file.dataSet.model == nullptr, file.messages.ErrorCount() > 0) << damaged;
        const File lenient(damaged, true);
        ASSERT_EQ(lenient.dataSet.model == nullptr, lenient.messages.ErrorCount() > 0) << damaged;
    }
}

// ---- Nesting

std::string Repeated(const std::string& piece, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += piece;
    return text;
}

void ExpectNestingRefused(const std::string& open, const std::string& close) {
    for (const std::size_t depth : {std::size_t{10000}, std::size_t{1000000}}) {
        for (const std::string& instance :
             {"#1=CURVE(" + Repeated(open, depth) + "1." + Repeated(close, depth) + ");",
              "#1=NUMBERS(" + Repeated(open, depth) + "1." + Repeated(close, depth) + ");",
              "#1=CHOOSER(" + Repeated(open, depth) + "1." + Repeated(close, depth) + ");",
              "#1=CURVE(" + Repeated(open, depth), "#1=CURVE(" + Repeated(close, depth),
              "#1=" + Repeated(open, depth) + Repeated(close, depth) + ";"}) {
            SCOPED_TRACE(instance.substr(0, 20) + std::to_string(depth));
            const File file(FileOf("#2=ITEM('a');\n" + instance));
            file.ExpectRefused();
            EXPECT_GE(file.FirstError().line, 9U);
            File(FileOf("#2=ITEM('a');\n" + instance), true);
        }
    }
}

TEST(BadFiles, DeeplyNestedListsAreRefused) { ExpectNestingRefused("(", ")"); }

TEST(BadFiles, DeeplyNestedTypedValuesAreRefused) { ExpectNestingRefused("T(", ")"); }

TEST(BadFiles, DeeplyNestedListsOfTypedValuesAreRefused) { ExpectNestingRefused("(T(", "))"); }

TEST(BadFiles, DeepNestingInTheHeaderIsSurvived) {
    const std::string deep(1000000, '(');
    File("ISO-10303-21;HEADER;FILE_NAME(" + deep + ");").ExpectRefused();
    File("ISO-10303-21;HEADER;FILE_SCHEMA(" + deep + ");").ExpectRefused();
    File(kHeader + "DATA(" + deep + ");").ExpectRefused();
}

TEST(BadFiles, SomeNestingIsTaken) {
    const std::string open(30, '(');
    const std::string close(30, ')');
    const File file(FileOf("#1=CURVE(" + open + "1." + close + ");"));
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    EXPECT_THAT(exchange::ToExchangeText(file.dataSet), HasSubstr(open + "1." + close));
}

}  // namespace
