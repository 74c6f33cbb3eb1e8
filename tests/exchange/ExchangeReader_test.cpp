// How the reader of exchange files reads valid files of any layout, edition and size, and values of
// other kinds than declared.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include "Exchange.h"
#include "ExchangeText.h"
#include "Orx.h"
#include "ParsedModel.h"
#include "SdaiIterator.h"

namespace {

using exchange::Message;
using exchange::Messages;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

const std::string kSchema = R"(SCHEMA test_schema;
TYPE label = STRING; END_TYPE;
TYPE length_measure = REAL; END_TYPE;
TYPE count_measure = INTEGER; END_TYPE;
TYPE numbers = LIST OF REAL; END_TYPE;
TYPE colour = ENUMERATION OF (red, green); END_TYPE;
TYPE item_list = LIST OF item; END_TYPE;
TYPE choice = SELECT (label, length_measure, count_measure, numbers, colour, item, item_list);
END_TYPE;
ENTITY item; name : OPTIONAL label; END_ENTITY;
ENTITY special_item SUBTYPE OF (item); rank : OPTIONAL INTEGER; END_ENTITY;
ENTITY everything;
  a_text : OPTIONAL STRING;
  an_integer : OPTIONAL INTEGER;
  a_real : OPTIONAL REAL;
  a_number : OPTIONAL NUMBER;
  a_boolean : OPTIONAL BOOLEAN;
  a_logical : OPTIONAL LOGICAL;
  a_binary : OPTIONAL BINARY;
  a_colour : OPTIONAL colour;
  an_item : OPTIONAL item;
  a_choice : OPTIONAL choice;
  reals : OPTIONAL LIST OF REAL;
END_ENTITY;
ENTITY text_holder; text : OPTIONAL STRING; END_ENTITY;
ENTITY integer_holder; whole : OPTIONAL INTEGER; END_ENTITY;
ENTITY real_holder; number : OPTIONAL REAL; END_ENTITY;
ENTITY number_holder; number : OPTIONAL NUMBER; END_ENTITY;
ENTITY colour_holder; colour : OPTIONAL colour; END_ENTITY;
ENTITY binary_holder; bits : OPTIONAL BINARY; END_ENTITY;
ENTITY item_holder; item : OPTIONAL item; END_ENTITY;
ENTITY choice_holder; choice : OPTIONAL choice; END_ENTITY;
ENTITY reals_holder; reals : OPTIONAL LIST OF REAL; END_ENTITY;
ENTITY integers_holder; integers : OPTIONAL LIST OF INTEGER; END_ENTITY;
ENTITY items_holder; items : OPTIONAL SET OF item; END_ENTITY;
ENTITY choices_holder; choices : OPTIONAL LIST OF choice; END_ENTITY;
ENTITY grid_holder; grid : OPTIONAL LIST OF LIST OF REAL; END_ENTITY;
ENTITY base; base_name : OPTIONAL STRING; END_ENTITY;
ENTITY left SUBTYPE OF (base); left_rank : OPTIONAL INTEGER; END_ENTITY;
ENTITY right SUBTYPE OF (base);
  right_rank : OPTIONAL INTEGER;
DERIVE
  SELF\base.base_name : STRING := 'right';
END_ENTITY;
END_SCHEMA;)";

const std::string kHeader =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('test'),'2;1');\n"
    "FILE_NAME('name','2024-01-02T03:04:05',('author'),('firm'),'tool','system','');\n"
    "FILE_SCHEMA(('TEST_SCHEMA'));\nENDSEC;\n";

std::string FileOf(const std::string& data) {
    return kHeader + "DATA;\n" + data + "\nENDSEC;\nEND-ISO-10303-21;\n";
}

exchange::SchemaCatalog TestSchemas() {
    Messages messages;
    exchange::SchemaCatalog schemas;
    for (auto& schema : exchange::ParseSchemas(kSchema, "schema", messages)) schemas.Add(schema);
    EXPECT_EQ(messages.ErrorCount(), 0U);
    return schemas;
}

// A file read from its text, with its messages.
struct File {
    explicit File(const std::string& text, const exchange::ReadOptions& options = {})
        : dataSet(exchange::ParseDataSet(text, "file", TestSchemas(), options, messages)) {}

    void ExpectRight() const {
        for (const Message& error : messages.Errors()) ADD_FAILURE() << error.ToString();
        for (const Message& warning : messages.Warnings()) ADD_FAILURE() << warning.ToString();
        if (dataSet.model == nullptr) throw std::runtime_error("the test's file cannot be read");
    }
    SdaiPrimitiveH operator[](unsigned long id) const {
        SdaiEntityInstance* instance = dataSet.model->Find(id);
        EXPECT_NE(instance, nullptr) << "no instance #" << id;
        return instance;
    }

    Messages messages;
    exchange::DataSet dataSet;
};

// A valid file with this data section.
struct Data : File {
    explicit Data(const std::string& data) : File(FileOf(data)) { ExpectRight(); }
};

SdaiPrimitiveH Attribute(const SdaiPrimitiveH& instance, const std::string& name) {
    return instance.GetAttr(SdaiString(std::string_view(name)));
}

std::string KindOf(const SdaiPrimitiveH& handle) {
    return std::string(handle.UnderlyingTypeName().View());
}

// The item of an enumeration, the digits of a binary value.
std::string ItemOf(const SdaiPrimitiveH& handle) {
    return std::string(kor::HandleAccess::TextOf(kor::HandleAccess::Held(handle)).View());
}

std::vector<unsigned long> Extent(const File& file, const std::string& type) {
    std::vector<unsigned long> ids;
    SdaiIterator_Of_SdaiEntityInstanceH members(
        file.dataSet.model->GetEntityExtent(SdaiString(std::string_view(type))));
    while (members.Next()) ids.push_back(members.GetCurrentMember()->GetInstanceNameId());
    return ids;
}

std::string Written(const File& file) { return exchange::ToExchangeText(file.dataSet); }

// ---- Values

TEST(ExchangeReader, ReadsEveryKindOfValue) {
    const Data file(
        "#1=EVERYTHING('text',-12,-2.5E1,3.25,.T.,.U.,\"2F\",.GREEN.,#2,LENGTH_MEASURE(0.5),"
        "(1.,-2.,3.E2));\n#2=ITEM('item');");
    const SdaiPrimitiveH all = file[1];
    EXPECT_EQ(TextIn(Attribute(all, "a_text")), "text");
    EXPECT_EQ(IntegerIn(Attribute(all, "an_integer")), -12);
    EXPECT_EQ(RealIn(Attribute(all, "a_real")), -25.0);
    EXPECT_EQ(RealIn(Attribute(all, "a_number")), 3.25);
    EXPECT_EQ(KindOf(Attribute(all, "a_boolean")), "BOOLEAN");
    EXPECT_TRUE(static_cast<const SdaiLogical&>(Attribute(all, "a_boolean")) == sdaiLTRUE);
    EXPECT_EQ(KindOf(Attribute(all, "a_logical")), "LOGICAL");
    EXPECT_TRUE(static_cast<const SdaiLogical&>(Attribute(all, "a_logical")) == SdaiLogical());
    EXPECT_EQ(KindOf(Attribute(all, "a_binary")), "BINARY");
    EXPECT_EQ(ItemOf(Attribute(all, "a_binary")), "2F");
    EXPECT_EQ(KindOf(Attribute(all, "a_colour")), "ENUMERATION");
    EXPECT_EQ(ItemOf(Attribute(all, "a_colour")), "GREEN");
    EXPECT_EQ(KindOf(Attribute(all, "an_item")), "ITEM");
    EXPECT_EQ(InstanceIn(Attribute(all, "an_item")), InstanceIn(file[2]));
    EXPECT_EQ(KindOf(Attribute(all, "a_choice")), "REAL");
    EXPECT_EQ(KindOf(Attribute(all, "reals")), "AGGREGATE");
    EXPECT_THAT(RealsIn(Attribute(all, "reals")), ElementsAre(1.0, -2.0, 300.0));
}

TEST(ExchangeReader, ReadsTruthValues) {
    struct Case {
        const char* item;
        SdaiLogical value;
    };
    const Case table[] = {{".T.", sdaiLTRUE}, {".F.", sdaiLFALSE}, {".U.", SdaiLogical()}};
    for (const Case& tested : table) {
        const Data file("#1=EVERYTHING($,$,$,$,$," + std::string(tested.item) + ",$,$,$,$,$);");
        const SdaiPrimitiveH value = Attribute(file[1], "a_logical");
        EXPECT_TRUE(value.exists());
        EXPECT_TRUE(static_cast<const SdaiLogical&>(value) == tested.value) << tested.item;
    }
}

TEST(ExchangeReader, ReadsIntegersOf64Bits) {
    struct Case {
        const char* literal;
        long value;
    };
    const Case table[] = {
        {"0", 0},
        {"-0", 0},
        {"+7", 7},
        {"007", 7},
        {"-12", -12},
        {"2147483648", 2147483648},
        {"9223372036854775807", LONG_MAX},
        {"+9223372036854775807", LONG_MAX},
        {"-9223372036854775808", LONG_MIN},
        {"000000000000000000000000000000000000012", 12},
    };
    for (const Case& tested : table) {
        const Data file("#1=INTEGER_HOLDER(" + std::string(tested.literal) + ");");
        EXPECT_EQ(IntegerIn(Attribute(file[1], "whole")), tested.value) << tested.literal;
    }
}

TEST(ExchangeReader, ReadsRealsExactly) {
    const char* const literals[] = {
        "1.",
        "-0.5",
        "+1.E3",
        "0.E+000",
        "1E5",
        "0.",
        "-0.",
        "+0.",
        "00001.",
        "1.0",
        "100000.",
        "1.5E3",
        "1.E-07",
        "1.E+07",
        "3.14159265358979",
        "0.1",
        "0.30000000000000004",
        // 17 significant digits and more
        "1.7976931348623157E308",
        "-1.7976931348623157E+308",
        "2.2250738585072014E-308",
        "2.2250738585072011E-308",
        "4.9406564584124654E-324",
        "4.9E-324",
        "-4.9E-324",
        "1.2345678901234567",
        "9007199254740993.",
        "9007199254740992.9999999999999999999999999",
        "0.1000000000000000055511151231257827021181583404541015625",
        "0.10000000000000000555111512312578270211815834045410156250000000000000000000001",
        "123456789012345678901234567890.",
        "123456789012345678901234567890.E-30",
        "0.000000000000000000000000000000000000000000000000000000000000000000000000000001",
        "1000000000000000000000000000000000000000000000000000000000000000000000000000000.",
        "179769313486231570000000000000000000000.E270",
        // rounds to 0
        "1.E-400",
        "-1.E-400",
        "1.E-99999999999",
        "0.E999",
        "0.E99999999999",
        "2.E-324",
    };
    for (const char* const literal : literals) {
        const Data file("#1=REAL_HOLDER(" + std::string(literal) + ");");
        EXPECT_EQ(std::bit_cast<std::uint64_t>(RealIn(Attribute(file[1], "number"))),
                  std::bit_cast<std::uint64_t>(std::strtod(literal, nullptr)))
            << literal;
    }
}

// Digits are read in groups: every number of digits before and after the point.
TEST(ExchangeReader, ReadsAnyNumberOfDigits) {
    const std::string digits = "12345678901234567890123456";
    for (std::size_t before = 1; before <= digits.size(); ++before) {
        std::string literals;
        std::vector<double> values;
        for (std::size_t behind = 0; before + behind <= digits.size(); ++behind) {
            const std::string literal =
                digits.substr(0, before) + '.' + digits.substr(before, behind);
            literals += (literals.empty() ? "" : ",") + literal;
            values.push_back(std::strtod(literal.c_str(), nullptr));
        }
        const Data file("#1=REALS_HOLDER((" + literals + "));");
        EXPECT_EQ(RealsIn(Attribute(file[1], "reals")), values) << before;
    }
    std::string instances;
    for (std::size_t count = 1; count <= 18; ++count) {
        const std::string number = digits.substr(0, count);
        instances += '#' + number + "=INTEGER_HOLDER(" + number + ");";
    }
    const Data file(instances);
    for (std::size_t count = 1; count <= 18; ++count) {
        const long number = std::stol(digits.substr(0, count));
        EXPECT_EQ(IntegerIn(Attribute(file[static_cast<unsigned long>(number)], "whole")), number);
    }
}

TEST(ExchangeReader, TooSmallRealsAreZero) {
    const Data file("#1=REALS_HOLDER((1.E-400,-1.E-400,1.E-325));");
    EXPECT_THAT(RealsIn(Attribute(file[1], "reals")), ElementsAre(0.0, 0.0, 0.0));
}

// The value of a real decides whether it is too large or too small, not its number of digits.
TEST(ExchangeReader, ReadsRealsOfManyDigits) {
    const std::string zeros(400, '0');
    struct Case {
        std::string literal;
        double value;
    };
    const Case table[] = {
        {"0." + zeros + "1", 0.0},
        {zeros + "1.E-400", 0.0},
        {"-0." + zeros + "1", 0.0},
        {"1" + zeros + ".E-400", 1.0},
        {"0." + zeros + "1E401", 1.0},
        {zeros + "1." + zeros, 1.0},
        {"0." + zeros + zeros + "1E100", 0.0},
        {"25" + zeros + ".E-401", 2.5},
    };
    for (const Case& tested : table) {
        const File file(FileOf("#1=REAL_HOLDER(" + tested.literal + ");"));
        EXPECT_EQ(file.messages.ErrorCount(), 0U) << tested.literal;
        if (file.dataSet.model == nullptr) continue;
        EXPECT_EQ(RealIn(Attribute(file[1], "number")), tested.value) << tested.literal;
    }
}

TEST(ExchangeReader, AnIntegerWhereARealIsDeclaredIsAReal) {
    const Data file(
        "#1=REAL_HOLDER(3);\n#2=REALS_HOLDER((1,2.5,-3));\n#3=GRID_HOLDER(((1,2),(),(3.)));\n"
        "#4=CHOICE_HOLDER(LENGTH_MEASURE(4));\n#5=CHOICE_HOLDER(NUMBERS((5,6)));\n"
        "#6=CHOICES_HOLDER((LENGTH_MEASURE(7),COUNT_MEASURE(8)));");
    EXPECT_EQ(RealIn(Attribute(file[1], "number")), 3.0);
    EXPECT_THAT(RealsIn(Attribute(file[2], "reals")), ElementsAre(1.0, 2.5, -3.0));
    const SdaiAggrInstance* reals = Attribute(file[2], "reals");
    EXPECT_EQ(KindOf(reals->GetMember(0)), "REAL");
    const SdaiAggrInstance* grid = Attribute(file[3], "grid");
    EXPECT_THAT(RealsIn(grid->GetMember(0)), ElementsAre(1.0, 2.0));
    const SdaiAggrInstance* row = grid->GetMember(0);
    EXPECT_EQ(KindOf(row->GetMember(0)), "REAL");
    EXPECT_EQ(RealIn(Attribute(file[4], "choice")), 4.0);
    EXPECT_THAT(RealsIn(Attribute(file[5], "choice")), ElementsAre(5.0, 6.0));
    const SdaiAggrInstance* choices = Attribute(file[6], "choices");
    EXPECT_EQ(RealIn(choices->GetMember(0)), 7.0);
    EXPECT_EQ(IntegerIn(choices->GetMember(1)), 8);
    EXPECT_THAT(Written(file), HasSubstr("#1=REAL_HOLDER(3.);"));
}

// Reals at the beginning of a list are read apart from other members.
TEST(ExchangeReader, ReadsListsThatBeginWithReals) {
    for (const char* list :
         {"(1.)", "(1.,-0.5,300.)", "(1.,2)", "(1.,2,3.)", "(1.,'a',2.)", "(1.,$)", "(1.,*,2.)",
          "(1.,#2,2.)", "(1.,.RED.)", "(1.,A(2.))", "(1.,())", "(1.,(2.,3.),4.)", "((1.,2.),3.)",
          "(1.,(2.,(3.,4),5.),(6.),7.)", "(1.,\"0A\")", "(-0.)", "(2,1.)"}) {
        const Data file("#1=OWN(" + std::string(list) + ");\n#2=ITEM('item');");
        EXPECT_THAT(Written(file), HasSubstr("#1=OWN(" + std::string(list) + ");"));
    }
}

TEST(ExchangeReader, ReadsRealsWithAnythingBetweenThem) {
    const Data file(
        "#1=REALS_HOLDER( ( 1. , /* two */ 2.\n,\n\t+3.5E0\\N\\, -4.e-1 ,5,6.5 /* six */ ) );");
    EXPECT_THAT(RealsIn(Attribute(file[1], "reals")), ElementsAre(1.0, 2.0, 3.5, -0.4, 5.0, 6.5));
}

// The exponent moves the point of digits that are exact; every power of ten, and those beyond.
TEST(ExchangeReader, ReadsAnyExponent) {
    std::string literals;
    std::vector<double> values;
    for (int exponent = -330; exponent <= 290; ++exponent) {
        for (const char* digits : {"1.5", "-123456789012345.", "0.000123"}) {
            for (const char* sign : {"E", "E+", "e0"}) {
                if (exponent < 0 && sign[1] != '\0') continue;
                const std::string literal = digits + (sign + std::to_string(exponent));
                literals += (literals.empty() ? "" : ",") + literal;
                values.push_back(std::strtod(literal.c_str(), nullptr));
            }
        }
    }
    const Data file("#1=REALS_HOLDER((" + literals + "));");
    EXPECT_EQ(RealsIn(Attribute(file[1], "reals")), values);
}

TEST(ExchangeReader, ANumberIsAnIntegerOrAReal) {
    const Data file("#1=NUMBER_HOLDER(3);#2=NUMBER_HOLDER(3.);");
    EXPECT_EQ(IntegerIn(Attribute(file[1], "number")), 3);
    EXPECT_EQ(RealIn(Attribute(file[2], "number")), 3.0);
}

TEST(ExchangeReader, ReadsBinaryValues) {
    for (const char* digits : {"0", "01", "3ABCDEF0123456789", "17", "2FFFFFFFFFFFFFFFFFFFFFFFF"}) {
        const Data file("#1=BINARY_HOLDER(\"" + std::string(digits) + "\");");
        EXPECT_EQ(KindOf(Attribute(file[1], "bits")), "BINARY");
        EXPECT_EQ(ItemOf(Attribute(file[1], "bits")), digits);
        EXPECT_THAT(Written(file), HasSubstr("(\"" + std::string(digits) + "\")"));
    }
}

TEST(ExchangeReader, ReadsBinaryValuesInSmallLettersAndOverSeveralLines) {
    const Data file("#1=BINARY_HOLDER(\"0aF\\N\\b\n1\\F\\c\");\n#2=ITEM('item');");
    EXPECT_EQ(ItemOf(Attribute(file[1], "BITS")), "0AFB1C");
}

TEST(ExchangeReader, KeepsTheLevelsOfTypedValues) {
    for (const char* value : {"A(B(C(D((1,2)))))", "A(B(C('text')))", "A((B(1.),B((C(2),#2))))",
                              "A(B(#2))", "A(B(()))", "A(*)", "A(B(*))", "A($)"}) {
        const Data file("#1=OWN(" + std::string(value) + ");\n#2=ITEM('item');");
        EXPECT_THAT(Written(file), HasSubstr("#1=OWN(" + std::string(value) + ");"));
        // Written to another attribute, they stay the same.
        const auto* own = file.dataSet.model->Find(1);
        const auto& instance = kor::Instance::Of(*own);
        const SdaiPrimitiveH holder = file.dataSet.model->GetEntityDefinition("CHOICE_HOLDER")
                                          ->CreateEntityInstance(file.dataSet.model.get());
        static_cast<SdaiAppInstance*>(static_cast<SdaiEntityInstance*>(holder))
            ->PutAttr("CHOICE", instance.Read(0));
        EXPECT_THAT(Written(file), HasSubstr("=CHOICE_HOLDER(" + std::string(value) + ");"));
    }
}

TEST(ExchangeReader, ReadsAFileWithoutData) {
    const std::string header = FileOf("").substr(0, FileOf("").find("DATA;"));
    const File file(header + "END-ISO-10303-21;\n");
    file.ExpectRight();
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 0U);
    EXPECT_THAT(Written(file), testing::EndsWith("ENDSEC;\nEND-ISO-10303-21;\n"));
    EXPECT_THAT(Written(file), testing::Not(HasSubstr("DATA")));
    // The first instance gets a data section.
    file.dataSet.model->GetEntityDefinition("ITEM")->CreateEntityInstance(file.dataSet.model.get());
    EXPECT_THAT(Written(file), HasSubstr("DATA;\n#1=ITEM($);\nENDSEC;\n"));
    File(Written(file)).ExpectRight();
}

TEST(ExchangeReader, ReadsUnsetValues) {
    const Data file(
        "#1=EVERYTHING($,$,$,$,$,$,$,$,$,$,$);\n#2=REALS_HOLDER(());\n#3=ITEMS_HOLDER(());");
    for (const char* name : {"a_text", "an_integer", "a_real", "a_number", "a_boolean", "a_logical",
                             "a_binary", "a_colour", "an_item", "a_choice", "reals"}) {
        EXPECT_TRUE(IsUnset(Attribute(file[1], name))) << name;
        EXPECT_FALSE(file[1].TestAttr(SdaiString(name))) << name;
    }
    EXPECT_TRUE(Attribute(file[2], "reals").exists()) << "an empty list is a value";
    EXPECT_EQ(Attribute(file[2], "reals").GetMemberCount(), 0);
    EXPECT_EQ(Attribute(file[3], "items").GetMemberCount(), 0);
}

TEST(ExchangeReader, ADerivedAttributeHasNoValue) {
    const Data file("#1=RIGHT(*,3);");
    EXPECT_TRUE(IsUnset(Attribute(file[1], "base_name")));
    EXPECT_FALSE(file[1].TestAttr("BASE_NAME"));
    EXPECT_EQ(IntegerIn(Attribute(file[1], "right_rank")), 3);
}

TEST(ExchangeReader, ReadsMembersThatAreUnset) {
    const Data file("#1=REALS_HOLDER((1.,$,3.));");
    const SdaiAggrInstance* members = Attribute(file[1], "reals");
    ASSERT_NE(members, nullptr);
    ASSERT_EQ(members->GetMemberCount(), 3);
    EXPECT_TRUE(IsUnset(members->GetMember(1)));
    EXPECT_EQ(RealIn(members->GetMember(2)), 3.0);
}

// ---- Texts

TEST(ExchangeReader, DecodesTexts) {
    struct Case {
        const char* encoded;
        const char* text;
    };
    const Case table[] = {
        {"''", ""},
        {"'it''s'", "it's"},
        {"''''", "'"},
        {"'a\\\\b'", "a\\b"},
        {"'\\X\\E9'", "\xE9"},
        {"'\\X2\\00E900E8\\X0\\'", "\xE9\xE8"},
        {"'\\X4\\000000E9\\X0\\'", "\xE9"},
        {"'\\S\\i'", "\xE9"},
        {"'\\PB\\\\S\\i'", "\xE9"},
        {"'caf\xC3\xA9'", "caf\xE9"},
        {"'\\X2\\03B1\\X0\\'", "\\X2\\03B1\\X0\\"},
        {"'\\X4\\0001F600\\X0\\'", "\\X4\\0001F600\\X0\\"},
        {"'\xCE\xB1'", "\\X2\\03B1\\X0\\"},
        {"'broken\n over\r\n lines'", "broken over lines"},
        {"'/* no comment */'", "/* no comment */"},
        {"';ENDSEC;#1=('", ";ENDSEC;#1=("},
    };
    for (const Case& tested : table) {
        const Data file("#1=TEXT_HOLDER(" + std::string(tested.encoded) + ");");
        EXPECT_EQ(TextIn(Attribute(file[1], "text")), tested.text) << tested.encoded;
    }
}

// A text in each of several languages, as a file may contain it.
const struct {
    const char* raw;
    const char* directives;
} kTexts[] = {
    {"Łódź", "\\X2\\0141\\X0\\\\X\\F3d\\X2\\017A\\X0\\"},
    {"Άξων", "\\X2\\038603BE03C903BD\\X0\\"},
    {"Болт 7", "\\X2\\0411043E043B0442\\X0\\ 7"},
    {"齿轮", "\\X2\\9F7F8F6E\\X0\\"},
    {"a😀b", "a\\X4\\0001F600\\X0\\b"},
};

TEST(ExchangeReader, ReadsTheTextsOfEveryLanguage) {
    for (const auto& [raw, directives] : kTexts) {
        for (const std::string encoded : {raw, directives}) {
            const Data file("#1=TEXT_HOLDER('" + encoded + "');");
            const SdaiPrimitiveH text = Attribute(file[1], "text");
            EXPECT_EQ(static_cast<const SdaiString&>(text).ToUtf8(), raw) << encoded;
            EXPECT_THAT(Written(file),
                        HasSubstr("#1=TEXT_HOLDER('" + std::string(directives) + "');"));
        }
    }
    const Data file("#1=TEXT_HOLDER('\\PE\\\\S\\1\\S\\^\\S\\[\\S\\b');");
    const SdaiPrimitiveH text = Attribute(file[1], "text");
    EXPECT_EQ(static_cast<const SdaiString&>(text).ToUtf8(), "Болт");
}

TEST(ExchangeReader, ReadsAFileThatIsNotUtf8ThroughoutAsIso8859) {
    // The only byte that is not UTF-8 comes more than a block after text that could be UTF-8.
    const std::string filler(200'000, ' ');
    const File file(FileOf("#1=TEXT_HOLDER('plain');\n#2=TEXT_HOLDER('\xC3\xA9');" + filler +
                           "\n#3=TEXT_HOLDER('caf\xE9');\n#4=TEXT_HOLDER('\\X2\\0141\\X0\\');"));
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    ASSERT_EQ(file.messages.Warnings().size(), 1U);
    EXPECT_EQ(file.messages.Warnings()[0].line, 9U);
    EXPECT_EQ(file.messages.Warnings()[0].column, 16U);
    EXPECT_THAT(file.messages.Warnings()[0].text, HasSubstr("ISO 8859-1"));
    const auto text = [&file](unsigned long id) {
        const SdaiPrimitiveH value = Attribute(file[id], "text");
        return static_cast<const SdaiString&>(value).ToUtf8();
    };
    EXPECT_EQ(text(2), "Ã©");
    EXPECT_EQ(text(3), "café");
    EXPECT_EQ(text(4), "Ł");
}

TEST(ExchangeReader, SaysNothingOfBytesThatNoStringHolds) {
    const Data file("/* caf\xE9 */#1=TEXT_HOLDER('plain');");
    EXPECT_EQ(TextIn(Attribute(file[1], "text")), "plain");
}

TEST(ExchangeReader, FindsUtf8CharactersThatBlocksCut) {
    // Read from a file, in blocks that end within characters.
    std::string text;
    while (text.size() < 300'000) text += "é😀Ł";
    const std::string path = testing::TempDir() + "utf8_blocks-" + std::to_string(getpid());
    std::ofstream(path) << FileOf("#1=TEXT_HOLDER('" + text + "');");
    Messages messages;
    const exchange::DataSet read =
        exchange::ReadDataSet(path, TestSchemas(), exchange::ReadOptions(), messages);
    std::remove(path.c_str());
    EXPECT_TRUE(messages.Warnings().empty());
    ASSERT_NE(read.model, nullptr);
    const SdaiPrimitiveH value = Attribute(read.model->Find(1), "text");
    EXPECT_EQ(static_cast<const SdaiString&>(value).ToUtf8(), text);
}

TEST(ExchangeReader, RefusesHalfOfASurrogatePair) {
    const std::string text = FileOf("#1=TEXT_HOLDER('ab\\X2\\0141D83D\\X0\\');");
    const File strict(text);
    EXPECT_EQ(strict.dataSet.model, nullptr);
    ASSERT_EQ(strict.messages.ErrorCount(), 1U);
    EXPECT_EQ(strict.messages.Errors()[0].line, 8U);
    EXPECT_EQ(strict.messages.Errors()[0].column, 27U);
    EXPECT_THAT(strict.messages.Errors()[0].text, HasSubstr("surrogate"));
    exchange::ReadOptions options;
    options.lenient = true;
    const File lenient(text, options);
    ASSERT_EQ(lenient.messages.Warnings().size(), 1U);
    EXPECT_EQ(lenient.messages.Warnings()[0].column, 27U);
    const SdaiPrimitiveH value = Attribute(lenient[1], "text");
    EXPECT_EQ(static_cast<const SdaiString&>(value).ToUtf8(), "abŁ\uFFFD");
}

TEST(ExchangeReader, AFileReadAndWrittenSaysTheSame) {
    for (const char* literal :
         {"'it''s'", "'\\\\'", "'\\X\\E9'", "'\\X2\\03B1\\X0\\'", "'a\\X2\\03B103B2\\X0\\b'",
          "'\\X4\\0001F600\\X0\\'", "'\\\\X2\\\\03'", "'\\\\X2\\\\0041\\\\X0\\\\'"}) {
        EXPECT_THAT(Written(Data("#1=TEXT_HOLDER(" + std::string(literal) + ");")),
                    HasSubstr("#1=TEXT_HOLDER(" + std::string(literal) + ");"));
    }
}

TEST(ExchangeReader, ReadsVeryLongTexts) {
    std::string text;
    while (text.size() < 3000000) text += "it's text\xE9 number " + std::to_string(text.size());
    std::string literal;
    exchange::AppendString(literal, text);
    for (std::size_t at = 80; at < literal.size(); at += 81) {
        // Line breaks between words, so not within a directive or a doubled apostrophe.
        if (literal[at] == ' ') literal.insert(at, "\n");
    }
    const Data file("#1=TEXT_HOLDER(" + literal + ");");
    EXPECT_TRUE(TextIn(Attribute(file[1], "text")) == text);
}

// ---- Selects

TEST(ExchangeReader, AnAttributeOfASelectTypeHoldsASelect) {
    const Data file(
        "#1=CHOICE_HOLDER(LENGTH_MEASURE(2.5));#2=CHOICE_HOLDER(COUNT_MEASURE(3));"
        "#3=CHOICE_HOLDER(LABEL('text'));#4=CHOICE_HOLDER(COLOUR(.RED.));"
        "#5=CHOICE_HOLDER(#7);#6=CHOICE_HOLDER(ITEM_LIST((#7,#8)));"
        "#7=ITEM('a');#8=ITEM('b');#9=CHOICE_HOLDER($);");
    struct Case {
        unsigned long id;
        const char* definedType;
        const char* kind;
    };
    const Case table[] = {
        {1, "LENGTH_MEASURE", "REAL"}, {2, "COUNT_MEASURE", "INTEGER"}, {3, "LABEL", "STRING"},
        {4, "COLOUR", "ENUMERATION"},  {6, "ITEM_LIST", "AGGREGATE"},
    };
    for (const Case& tested : table) {
        const SdaiPrimitiveH choice = Attribute(file[tested.id], "choice");
        const SdaiSelectH& select = choice;
        EXPECT_EQ(select.DefinedType().View(), tested.definedType);
        EXPECT_EQ(KindOf(choice), tested.kind);
        EXPECT_EQ(KindOf(select.getValue()), tested.kind);
    }
    const SdaiPrimitiveH instance = Attribute(file[5], "choice");
    EXPECT_EQ(KindOf(instance), "ITEM");
    EXPECT_EQ(InstanceIn(instance), InstanceIn(file[7]));
    const SdaiAggrInstance* items = Attribute(file[6], "choice");
    ASSERT_EQ(items->GetMemberCount(), 2);
    EXPECT_EQ(items->GetInstanceMember(1), InstanceIn(file[8]));
    EXPECT_TRUE(IsUnset(Attribute(file[9], "choice")));
}

TEST(ExchangeReader, MembersOfAListOfSelectsAreSelects) {
    const Data file(
        "#1=CHOICES_HOLDER((LABEL('a'),#2,LENGTH_MEASURE(1.),#1000000));"
        "#2=ITEM($);#1000000=ITEM($);");
    const SdaiAggrInstance* choices = Attribute(file[1], "choices");
    ASSERT_EQ(choices->GetMemberCount(), 4);
    EXPECT_EQ(static_cast<const SdaiSelectH&>(choices->GetMember(0)).DefinedType().View(), "LABEL");
    EXPECT_EQ(choices->GetInstanceMember(1), InstanceIn(file[2]));
    EXPECT_EQ(choices->GetRealMember(2), 1.0);
    EXPECT_EQ(choices->GetInstanceMember(3), InstanceIn(file[1000000]));
}

// ---- References

TEST(ExchangeReader, ConnectsReferencesInAllDirections) {
    const Data file(
        "#10=ITEM_HOLDER(#30);\n"                // forward
        "#20=ITEMS_HOLDER((#30,#20,#5,#30));\n"  // to itself and more than once
        "#30=SPECIAL_ITEM('name',1);\n#40=ITEM_HOLDER(#30);\n"
        "#50=UNDECLARED(#60,((#30),(TYPED((#60,#50)))));\n#60=UNDECLARED(#50);\n#5=ITEM($);");
    EXPECT_EQ(InstanceIn(Attribute(file[10], "item")), InstanceIn(file[30]));
    EXPECT_EQ(InstanceIn(Attribute(file[40], "item")), InstanceIn(file[30]));
    const SdaiAggrInstance* items = Attribute(file[20], "items");
    ASSERT_EQ(items->GetMemberCount(), 4);
    EXPECT_EQ(items->GetInstanceMember(0), InstanceIn(file[30]));
    EXPECT_EQ(items->GetInstanceMember(1), InstanceIn(file[20]));
    EXPECT_EQ(items->GetInstanceMember(2), InstanceIn(file[5]));
    EXPECT_EQ(items->GetInstanceMember(3), InstanceIn(file[30]));
    EXPECT_THAT(Written(file), HasSubstr("#50=UNDECLARED(#60,((#30),(TYPED((#60,#50)))));"));
    EXPECT_THAT(Written(file), HasSubstr("#60=UNDECLARED(#50);"));
}

TEST(ExchangeReader, ReadsInstanceNamesOf63Bits) {
    const Data file(
        "#9223372036854775807=ITEM('largest');\n"
        "#1=ITEM_HOLDER(#0000000000000000000000009223372036854775807);\n#3=ITEM('three');\n");
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(file[1].GetAttr("ITEM")),
              file.dataSet.model->Find(9223372036854775807));
    // The largest name is taken: new instances get the smallest free ones.
    const SdaiEntity* item = file.dataSet.model->GetEntityDefinition("ITEM");
    for (const unsigned long expected : {2U, 4U, 5U}) {
        EXPECT_EQ(item->CreateEntityInstance(file.dataSet.model.get())->GetInstanceNameId(),
                  expected);
    }
    const File again(Written(file));
    again.ExpectRight();
    EXPECT_EQ(Written(again), Written(file));
}

TEST(ExchangeReader, ReadsInstanceNamesOfAnySize) {
    const Data file(
        "#4294967296=ITEM_HOLDER(#999999999999999999);\n#1=ITEM('one');\n"
        "#999999999999999999=ITEM('large');\n#1000000000000=ITEM_HOLDER(#1);\n"
        "#000123=ITEM('zeros');\n#4294967297=ITEM_HOLDER(#123);");
    EXPECT_EQ(InstanceIn(file[4294967296])->GetInstanceNameId(), 4294967296U);
    EXPECT_EQ(TextIn(Attribute(Attribute(file[4294967296], "item"), "name")), "large");
    EXPECT_EQ(TextIn(Attribute(Attribute(file[1000000000000], "item"), "name")), "one");
    EXPECT_EQ(TextIn(Attribute(Attribute(file[4294967297], "item"), "name")), "zeros");
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 6U);
    EXPECT_EQ(file.dataSet.model->Find(0), nullptr);
    EXPECT_EQ(file.dataSet.model->Find(2), nullptr);
}

TEST(ExchangeReader, KeepsTheOrderOfTheFile) {
    const Data file(
        "#30=ITEM($);#10=SPECIAL_ITEM($,$);#25=TEXT_HOLDER($);#20=ITEM($);#5=SPECIAL_ITEM($,$);");
    EXPECT_THAT(Extent(file, "ITEM"), ElementsAre(30, 10, 20, 5));
    EXPECT_THAT(Extent(file, "special_item"), ElementsAre(10, 5));
    EXPECT_THAT(Extent(file, "TEXT_HOLDER"), ElementsAre(25));
    EXPECT_THAT(Extent(file, "EVERYTHING"), ElementsAre());
    EXPECT_THAT(Extent(file, "NO_SUCH_TYPE"), ElementsAre());
}

// ---- Complex instances

TEST(ExchangeReader, ReadsComplexInstances) {
    const Data file("#1=(BASE('name')LEFT(1)RIGHT(2));");
    EXPECT_EQ(file[1].GetInstanceType()->Name().View(), "BASE+LEFT+RIGHT");
    EXPECT_EQ(KindOf(file[1]), "BASE+LEFT+RIGHT");
    for (const char* kind : {"BASE", "LEFT", "right"}) {
        EXPECT_TRUE(file[1].IsKindOf(SdaiString(kind))) << kind;
        EXPECT_THAT(Extent(file, kind), ElementsAre(1));
    }
    EXPECT_FALSE(file[1].IsKindOf("ITEM"));
    EXPECT_EQ(TextIn(Attribute(file[1], "base_name")), "name");
    EXPECT_EQ(IntegerIn(Attribute(file[1], "left_rank")), 1);
    EXPECT_EQ(IntegerIn(Attribute(file[1], "right_rank")), 2);
}

TEST(ExchangeReader, PutsThePartsOfAComplexInstanceInAlphabeticalOrder) {
    for (const char* parts : {"BASE(*)LEFT(1)RIGHT(2)", "RIGHT(2)LEFT(1)BASE(*)",
                              "LEFT(1) RIGHT(2)\nBASE(*)", "RIGHT(2)/**/BASE(*) LEFT(1)"}) {
        const Data file("#1=(" + std::string(parts) + ");");
        EXPECT_EQ(KindOf(file[1]), "BASE+LEFT+RIGHT");
        EXPECT_EQ(IntegerIn(Attribute(file[1], "left_rank")), 1);
        EXPECT_EQ(IntegerIn(Attribute(file[1], "right_rank")), 2);
        EXPECT_THAT(Written(file), HasSubstr("#1=(BASE(*)LEFT(1)RIGHT(2));"));
    }
}

TEST(ExchangeReader, AComplexInstanceIsInTheExtentsOfItsPartsInTheOrderOfTheFile) {
    const Data file("#9=BASE('a');#8=(RIGHT($)BASE(*)LEFT($));#7=LEFT('b',$);#6=(LEFT($)BASE($));");
    EXPECT_THAT(Extent(file, "BASE"), ElementsAre(9, 8, 7, 6));
    EXPECT_THAT(Extent(file, "LEFT"), ElementsAre(8, 7, 6));
    EXPECT_THAT(Extent(file, "RIGHT"), ElementsAre(8));
}

TEST(ExchangeReader, AComplexInstanceIsOfTheKindOfTheSupertypesOfItsParts) {
    const Data file("#1=(LEFT(1)SPECIAL_ITEM(2));");
    for (const char* kind : {"LEFT", "BASE", "SPECIAL_ITEM", "ITEM"}) {
        EXPECT_TRUE(file[1].IsKindOf(SdaiString(kind))) << kind;
        EXPECT_THAT(Extent(file, kind), ElementsAre(1)) << kind;
    }
    EXPECT_EQ(KindOf(file[1]), "LEFT+SPECIAL_ITEM");
}

TEST(ExchangeReader, AComplexInstanceMayHaveUndeclaredParts) {
    const Data file("#1=(ZED(1,'x')LEFT(2)ABLE()BASE('b'));#2=ITEM_HOLDER($);");
    EXPECT_EQ(KindOf(file[1]), "ABLE+BASE+LEFT+ZED");
    EXPECT_EQ(IntegerIn(Attribute(file[1], "left_rank")), 2);
    EXPECT_THAT(Extent(file, "ZED"), ElementsAre(1));
    EXPECT_THAT(Extent(file, "ABLE"), ElementsAre(1));
    EXPECT_THAT(Extent(file, "BASE"), ElementsAre(1));
    EXPECT_TRUE(file[1].IsKindOf("ABLE"));
    EXPECT_THAT(Written(file), HasSubstr("#1=(ABLE()BASE('b')LEFT(2)ZED(1,'x'));"));
}

// The reader remembers the keywords that it has met, by their length, beginning and end. These are
// alike in that, and return when others have taken their place, alone and as parts.
TEST(ExchangeReader, TellsApartKeywordsThatDifferInTheMiddleAlone) {
    constexpr int kTypes = 300;
    std::vector<std::string> instances;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < kTypes; ++i) {
            const std::string number = std::to_string(1000 + i);
            const std::string record = "BEGINNING_" + number + "_AND_THE_END(" + number + ")";
            const std::string name = '#' + std::to_string(instances.size() + 1) + '=';
            instances.push_back(name + (i % 2 == 0 ? record : "(BASE('b')" + record + ")") + ";\n");
            instances.push_back('#' + std::to_string(instances.size() + 1) +
                                (i % 3 == 0 ? "=(BASE('c')LEFT(1));\n" : "=LEFT('d',2);\n"));
        }
    }
    const std::string all = std::accumulate(instances.begin(), instances.end(), std::string());
    const Data file(all);
    file.ExpectRight();
    EXPECT_THAT(Written(file), HasSubstr(all));
    EXPECT_EQ(KindOf(file[2]), "BASE+LEFT");
    EXPECT_EQ(IntegerIn(Attribute(file[2], "left_rank")), 1);
    EXPECT_EQ(IntegerIn(Attribute(file[4], "left_rank")), 2);
    EXPECT_THAT(Extent(file, "BEGINNING_1001_AND_THE_END"),
                ElementsAre(3, 3 + 2 * kTypes, 3 + 4 * kTypes));
}

TEST(ExchangeReader, AnInstanceOfOnePartInParenthesesIsOfThatType) {
    const Data file("#1=(ITEM('a'));");
    EXPECT_EQ(KindOf(file[1]), "ITEM");
    EXPECT_EQ(TextIn(Attribute(file[1], "name")), "a");
    EXPECT_THAT(Extent(file, "ITEM"), ElementsAre(1));
}

// ---- Types that the schema does not declare

TEST(ExchangeReader, KeepsInstancesOfUndeclaredTypes) {
    const std::string instances[] = {
        "#1=CURVE('c',1,2.5,.T.,$,*,\"1F\",#2,(1,(2.,'x')),.RED.);",
        "#2=CURVE();",
        "#3=!USER_DEFINED('x',TYPED(1),TYPED((TYPED('y'))));",
        "#4=CURVE(7);",
        "#5=(CURVE(1)SURFACE(2.));",
        "#6=X_1_Y2(.F.,.U.,(),((),()));",
    };
    std::string data;
    for (const std::string& instance : instances) data += instance + "\n";
    const Data file(data);
    EXPECT_THAT(Extent(file, "CURVE"), ElementsAre(1, 2, 4, 5));
    EXPECT_THAT(Extent(file, "surface"), ElementsAre(5));
    EXPECT_THAT(Extent(file, "!USER_DEFINED"), ElementsAre(3));
    EXPECT_EQ(KindOf(file[1]), "CURVE");
    EXPECT_EQ(KindOf(file[3]), "!USER_DEFINED");
    EXPECT_TRUE(file[4].IsKindOf("CURVE"));
    EXPECT_FALSE(file[4].IsKindOf("SURFACE"));
    const std::string written = Written(file);
    for (const std::string& instance : instances) EXPECT_THAT(written, HasSubstr(instance));
}

TEST(ExchangeReader, KeepsTheKindsOfUndeclaredValues) {
    const Data file("#1=CURVE('text',7,7.,\"1F\",.RED.,#1,(1,2),$,*);");
    const auto& instance = kor::Instance::Of(*InstanceIn(file[1]));
    const char* const kinds[] = {"STRING", "INTEGER",   "REAL", "BINARY", "ENUMERATION",
                                 "CURVE",  "AGGREGATE", "",     ""};
    ASSERT_EQ(instance.Values().size(), std::size(kinds));
    for (std::size_t i = 0; i < std::size(kinds); ++i) {
        EXPECT_EQ(KindOf(kor::ToHandle(instance.Values()[i], false)), kinds[i]) << i;
    }
}

// ---- Values of another kind than declared

struct WrongKind {
    const char* name;
    const char* instance;  // the value is at the "^"
    const char* attribute;
    const char* kind;  // of the value that is kept
};

std::ostream& operator<<(std::ostream& stream, const WrongKind& wrong) {
    return stream << wrong.name;
}

class WrongKinds : public testing::TestWithParam<WrongKind> {};

TEST_P(WrongKinds, AreKeptWithAWarning) {
    std::string data = GetParam().instance;
    const std::size_t mark = data.find('^');
    data.erase(mark, 1);
    const File file(FileOf("#2=ITEM($);\n" + data));
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    ASSERT_EQ(file.messages.WarningCount(), 1U);
    const Message& warning = file.messages.Warnings().front();
    EXPECT_EQ(warning.file, "file");
    EXPECT_EQ(warning.line, 9U) << warning.ToString();
    EXPECT_EQ(warning.column, mark + 1) << warning.ToString();
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_EQ(KindOf(Attribute(file[1], GetParam().attribute)), GetParam().kind);
    EXPECT_THAT(Written(file), HasSubstr(data));
}

INSTANTIATE_TEST_SUITE_P(
    ExchangeReader, WrongKinds,
    testing::Values(
        WrongKind{"TextForInteger", "#1=INTEGER_HOLDER(^'x');", "whole", "STRING"},
        WrongKind{"RealForInteger", "#1=INTEGER_HOLDER(^1.5);", "whole", "REAL"},
        WrongKind{"EnumerationForReal", "#1=REAL_HOLDER(^.RED.);", "number", "ENUMERATION"},
        WrongKind{"TextForNumber", "#1=NUMBER_HOLDER(^'1');", "number", "STRING"},
        WrongKind{"IntegerForText", "#1=TEXT_HOLDER(^12);", "text", "INTEGER"},
        WrongKind{"BinaryForText", "#1=TEXT_HOLDER(^\"0A\");", "text", "BINARY"},
        WrongKind{"ReferenceForText", "#1=TEXT_HOLDER(^#2);", "text", "ITEM"},
        WrongKind{"ListForText", "#1=TEXT_HOLDER(^('x'));", "text", "AGGREGATE"},
        WrongKind{"TextForBinary", "#1=BINARY_HOLDER(^'0A');", "bits", "STRING"},
        WrongKind{"IntegerForEnumeration", "#1=COLOUR_HOLDER(^1);", "colour", "INTEGER"},
        WrongKind{"TextForReference", "#1=ITEM_HOLDER(^'x');", "item", "STRING"},
        WrongKind{"RealForList", "#1=REALS_HOLDER(^1.5);", "reals", "REAL"},
        WrongKind{"TextAmongReals", "#1=REALS_HOLDER((1.,^'x',2.));", "reals", "AGGREGATE"},
        WrongKind{"TextAmongReferences", "#1=ITEMS_HOLDER((#2,^'x'));", "items", "AGGREGATE"},
        WrongKind{"RealAmongIntegers", "#1=INTEGERS_HOLDER((1,^2.5));", "integers", "AGGREGATE"},
        WrongKind{"RealForRow", "#1=GRID_HOLDER(((1.),^2.));", "grid", "AGGREGATE"},
        WrongKind{"TextInRow", "#1=GRID_HOLDER(((1.),(^'x')));", "grid", "AGGREGATE"},
        WrongKind{"BinaryForSelect", "#1=CHOICE_HOLDER(^\"0A\");", "choice", "BINARY"},
        WrongKind{"TextInTypedReal", "#1=CHOICE_HOLDER(LENGTH_MEASURE(^'x'));", "choice",
                  "STRING"}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(ExchangeReader, KeepsTheFirstTwentyWarningsAndCountsAll) {
    std::string data;
    for (int i = 1; i <= 25; ++i) data += "#" + std::to_string(i) + "=INTEGER_HOLDER('x');\n";
    const File file(FileOf(data));
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    EXPECT_EQ(file.messages.WarningCount(), 25U);
    ASSERT_THAT(file.messages.Warnings(), SizeIs(20));
    EXPECT_EQ(file.messages.Warnings().back().line, 27U);  // the data begin in line 8
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 25U);
}

// ---- Layout

// The tokens of a file.
const std::vector<std::string> kTokens = {
    "ISO-10303-21",
    ";",
    "HEADER",
    ";",
    "FILE_DESCRIPTION",
    "(",
    "(",
    "'it''s /* */'",
    ")",
    ",",
    "'2;1'",
    ")",
    ";",
    "FILE_NAME",
    "(",
    "'n'",
    ",",
    "'t'",
    ",",
    "(",
    "'a'",
    ",",
    "'b'",
    ")",
    ",",
    "(",
    "'o'",
    ")",
    ",",
    "'p'",
    ",",
    "'s'",
    ",",
    "''",
    ")",
    ";",
    "FILE_SCHEMA",
    "(",
    "(",
    "'TEST_SCHEMA'",
    ")",
    ")",
    ";",
    "ENDSEC",
    ";",
    "DATA",
    ";",  //
    "#1",
    "=",
    "EVERYTHING",
    "(",
    "'/* text */'",
    ",",
    "-12",
    ",",
    "-2.5E1",
    ",",
    "+3.25",
    ",",
    ".T.",
    ",",
    ".U.",
    ",",
    "\"2F\"",
    ",",
    ".GREEN.",
    ",",
    "#2",
    ",",
    "LENGTH_MEASURE",
    "(",
    "0.5",
    ")",
    ",",
    "(",
    "1.",
    ",",
    "2.",
    ")",
    ")",
    ";",  //
    "#2",
    "=",
    "ITEM",
    "(",
    "$",
    ")",
    ";",  //
    "#3",
    "=",
    "(",
    "BASE",
    "(",
    "*",
    ")",
    "RIGHT",
    "(",
    "4",
    ")",
    ")",
    ";",
    "#4",
    "=",
    "!USER",
    "(",
    ")",
    ";",  //
    "#5",
    "=",
    "CURVE",
    "(",
    "(",
    "(",
    ")",
    ",",
    "(",
    "#3",
    ",",
    "#1",
    ")",
    ")",
    ",",
    "*",
    ")",
    ";",
    "ENDSEC",
    ";",
    "END-ISO-10303-21",
    ";",
};

std::string Joined(const std::string& separator) {
    std::string text;
    for (const std::string& token : kTokens) text += token + separator;
    return text;
}

TEST(ExchangeReader, TakesAnythingBetweenTokens) {
    const File plain(Joined(""));
    plain.ExpectRight();
    const std::string expected = Written(plain);
    EXPECT_EQ(plain.dataSet.model->InstanceCount(), 5U);
    for (const char* separator :
         {" ", "\n", "\r\n", "\t", "/**/", "/* c */", "/***/", "/* ' */", "/* '' \" */",
          "/* ; ENDSEC; */", "/*#9=ITEM($);*/", "/* /* */", "/*/*/", "/* * / **/", " /*\n\n*/ ",
          "/*a*//*b*/\n/*c*/", "/* ) ( */", "\n\n  \t \r\n", "/* \xC3\xA9\xE9 */"}) {
        const File file(Joined(separator));
        file.ExpectRight();
        EXPECT_EQ(Written(file), expected) << separator;
    }
}

TEST(ExchangeReader, TakesBlanksAndCommentsBeforeTheFile) {
    for (const char* before : {" ", "\n", "/* a comment */ "}) {
        const File file(before + FileOf("#1=ITEM('a');"));
        file.ExpectRight();
        EXPECT_EQ(file.dataSet.model->InstanceCount(), 1U);
    }
}

// Print control directives separate tokens, as blanks do.
TEST(ExchangeReader, SkipsPrintControlDirectivesBetweenTokens) {
    const File plain(Joined(""));
    for (const char* separator : {"\\N\\", "\\F\\"}) {
        const File file(Joined(separator));
        file.ExpectRight();
        EXPECT_EQ(Written(file), Written(plain));
    }
}

TEST(ExchangeReader, FindsTypeNamesInAnyCase) {
    const Data file("#1=special_item('a',1);#2=Special_Item('b',2);");
    EXPECT_THAT(Extent(file, "SPECIAL_ITEM"), ElementsAre(1, 2));
    EXPECT_EQ(KindOf(file[1]), "SPECIAL_ITEM");
}

// A type that was just read is found again without looking it up in the schema.
TEST(ExchangeReader, FindsTheTypesOfInstancesThatFollowEachOther) {
    const Data file(
        "#1=ITEM('a');#2=item('b');#3=ITEM ('c');#4=/* ( */ITEM('d');#5=ITEM\n('e');#6=ITEM('f');\n"
        "#7=CURVE(1);#8=CURVE(1,2);#9=curve(1);#10=CURVE(1,2);#11=CURVE();#12=CURVE(1);\n"
        // The same length, and the same first and last eight letters.
        "#13=BEGINS_SO_1_ENDS_SO(1);#14=BEGINS_SO_2_ENDS_SO(1);#15=BEGINS_SO_1_ENDS_SO(1);\n"
        "#16=!OWN(1);#17=OWN(1);#18=!OWN(1);#19=A(1);#20=B(1);#21=AB(1);#22=A(1);#23=ITEM('g');");
    EXPECT_THAT(Extent(file, "ITEM"), ElementsAre(1, 2, 3, 4, 5, 6, 23));
    EXPECT_THAT(Extent(file, "CURVE"), ElementsAre(7, 8, 9, 10, 11, 12));
    EXPECT_THAT(Extent(file, "BEGINS_SO_1_ENDS_SO"), ElementsAre(13, 15));
    EXPECT_THAT(Extent(file, "BEGINS_SO_2_ENDS_SO"), ElementsAre(14));
    EXPECT_THAT(Extent(file, "!OWN"), ElementsAre(16, 18));
    EXPECT_THAT(Extent(file, "OWN"), ElementsAre(17));
    EXPECT_THAT(Extent(file, "A"), ElementsAre(19, 22));
    EXPECT_THAT(Extent(file, "B"), ElementsAre(20));
    EXPECT_THAT(Extent(file, "AB"), ElementsAre(21));
    for (const char* record : {"#8=CURVE(1,2);", "#11=CURVE();", "#12=CURVE(1);"}) {
        EXPECT_THAT(Written(file), HasSubstr(record));
    }
}

// ---- The header

std::vector<std::string> HeaderKeywords(const File& file) {
    std::vector<std::string> keywords;
    for (const auto& record : file.dataSet.header) keywords.push_back(record.keyword);
    return keywords;
}

TEST(ExchangeReader, KeepsTheHeader) {
    const File file(FileOf(""));
    file.ExpectRight();
    EXPECT_THAT(HeaderKeywords(file), ElementsAre("FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"));
    EXPECT_THAT(file.dataSet.header[0].parameters, HasSubstr("('test'),'2;1'"));
    EXPECT_THAT(file.dataSet.header[1].parameters,
                HasSubstr("'name','2024-01-02T03:04:05',('author'),('firm'),'tool','system',''"));
    EXPECT_THAT(file.dataSet.header[2].parameters, HasSubstr("('TEST_SCHEMA')"));
}

TEST(ExchangeReader, KeepsRecordsOfLaterEditionsAndOfUsers) {
    const File file(
        "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'4;1');FILE_NAME('','',(''),(''),'','','');"
        "FILE_SCHEMA(('TEST_SCHEMA'));FILE_POPULATION('TEST_SCHEMA','SECTION_BOUNDARY',$);"
        "SECTION_LANGUAGE($,'en');SECTION_CONTEXT($,('c'));SCHEMA_POPULATION((('a','b',$)));"
        "!MY_RECORD(1,.T.,(2.5),TYPED('x'));ENDSEC;DATA;ENDSEC;END-ISO-10303-21;");
    file.ExpectRight();
    EXPECT_THAT(
        HeaderKeywords(file),
        ElementsAre("FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA", "FILE_POPULATION",
                    "SECTION_LANGUAGE", "SECTION_CONTEXT", "SCHEMA_POPULATION", "!MY_RECORD"));
    EXPECT_THAT(file.dataSet.header.back().parameters, HasSubstr("1,.T.,(2.5),TYPED('x')"));
}

TEST(ExchangeReader, TakesTheSchemaUpToTheFirstBlank) {
    for (const char* name : {"TEST_SCHEMA", "TEST_SCHEMA { 1 0 10303 214 1 1 1 1 }",
                             "TEST_SCHEMA {1 0}", "test_schema", "TEST_SCHEMA "}) {
        const File file("ISO-10303-21;HEADER;FILE_SCHEMA(('" + std::string(name) +
                        "'));ENDSEC;DATA;#1=ITEM('a');ENDSEC;END-ISO-10303-21;");
        file.ExpectRight();
        EXPECT_EQ(file.dataSet.model->SchemaName().View(), "TEST_SCHEMA") << name;
    }
}

TEST(ExchangeReader, PrefersSchemasThatWereAdded) {
    Messages messages;
    exchange::SchemaCatalog schemas;
    for (const char* text : {"SCHEMA PDM_SCHEMA; ENTITY first; END_ENTITY; END_SCHEMA;",
                             "SCHEMA pdm_schema; ENTITY second; END_ENTITY; END_SCHEMA;"}) {
        for (auto& schema : exchange::ParseSchemas(text, "schema", messages)) schemas.Add(schema);
    }
    const auto file = exchange::ParseDataSet(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('PDM_SCHEMA'));ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
        "file", schemas, {}, messages);
    ASSERT_NE(file.model, nullptr);
    EXPECT_NE(file.model->GetEntityDefinition("FIRST"), nullptr);
    EXPECT_EQ(file.model->GetEntityDefinition("SECOND"), nullptr);
    EXPECT_EQ(file.model->GetEntityDefinition("PRODUCT"), nullptr);
}

const std::string kLatest = "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF";

// A file of a schema, with one product.
std::string FileOfSchema(const std::string& name) {
    return "ISO-10303-21;HEADER;\nFILE_SCHEMA(('" + name +
           "'));ENDSEC;DATA;#1=PRODUCT('p','Bolt',$,());ENDSEC;END-ISO-10303-21;";
}

TEST(ExchangeReader, ReadsConformanceClassesAndEditionsWithTheBuiltInSchema) {
    const std::pair<const char*, const char*> names[] = {
        {"AUTOMOTIVE_DESIGN_CC2", "AUTOMOTIVE_DESIGN"},
        {"automotive_design_cc1 { 1 2 10303 214 -1 1 3 2}", "AUTOMOTIVE_DESIGN"},
        {"CONFIG_CONTROL_DESIGN_2", "CONFIG_CONTROL_DESIGN"},
        {"PDM_SCHEMA_12", "PDM_SCHEMA"},
    };
    for (const auto& [name, schema] : names) {
        const File file(FileOfSchema(name));
        file.ExpectRight();
        EXPECT_EQ(file.dataSet.model->SchemaName().View(), schema) << name;
    }
}

TEST(ExchangeReader, ReadsOtherProtocolsWithTheResourcesTheyShareAndOneWarning) {
    for (const char* name : {"AP209_MULTIDISCIPLINARY_ANALYSIS_AND_DESIGN_MIM_LF {1 0 10303 409}",
                             "AP210_ELECTRONIC_ASSEMBLY_INTERCONNECT_AND_PACKAGING_DESIGN_MIM_LF",
                             "INTEGRATED_CNC_SCHEMA", "ap239_product_life_cycle_support_mim_lf",
                             "STRUCTURAL_ANALYSIS_DESIGN", "SOMETHING_NEW_MIM_LF"}) {
        const File file(FileOfSchema(name));
        EXPECT_EQ(file.messages.ErrorCount(), 0U) << name;
        ASSERT_EQ(file.messages.WarningCount(), 1U) << name;
        const std::string plain = std::string(name).substr(0, std::string(name).find(' '));
        const std::string& warning = file.messages.Warnings()[0].text;
        EXPECT_THAT(warning, StartsWith("schema '" + plain.substr(0, 60)));
        EXPECT_THAT(warning,
                    HasSubstr("is not built in: read with what it shares with " + kLatest));
        EXPECT_EQ(file.messages.Warnings()[0].line, 2U);
        EXPECT_EQ(file.dataSet.model->SchemaName().View(), kLatest);
        EXPECT_EQ(TextIn(Attribute(file[1], "NAME")), "Bolt");
    }
}

TEST(ExchangeReader, RefusesSchemasThatShareNothingWithABuiltInOne) {
    for (const char* name : {"IFC4", "AP2_NOTHING", "APPLES", "AUTOMOTIVE", "MY_AUTOMOTIVE_DESIGN",
                             "AP20X_NOTHING", "AP209"}) {
        const File file(FileOfSchema(name));
        EXPECT_EQ(file.dataSet.model, nullptr) << name;
        ASSERT_EQ(file.messages.ErrorCount(), 1U) << name;
        EXPECT_THAT(file.messages.Errors()[0].text,
                    StartsWith("unknown schema '" + std::string(name) + "'"));
    }
}

TEST(ExchangeReader, ReadsWithTheSchemaThatIsAskedForWhateverTheFileNames) {
    exchange::ReadOptions options;
    options.schema = exchange::BuiltInSchema("PDM_SCHEMA");
    for (const std::string& text :
         {FileOfSchema("IFC4"), FileOfSchema("CONFIG_CONTROL_DESIGN"), FileOfSchema(""),
          std::string("ISO-10303-21;HEADER;ENDSEC;DATA;#1=PRODUCT('p','Bolt',$,());ENDSEC;"
                      "END-ISO-10303-21;")}) {
        const File file(text, options);
        file.ExpectRight();
        EXPECT_EQ(file.dataSet.model->SchemaName().View(), "PDM_SCHEMA");
        EXPECT_EQ(TextIn(Attribute(file[1], "NAME")), "Bolt");
    }
}

TEST(ExchangeReader, KeepsTheNameOfTheSchemaThatTheFileHas) {
    const File file(FileOfSchema("AUTOMOTIVE_DESIGN_CC2"));
    EXPECT_THAT(exchange::ToExchangeText(file.dataSet),
                HasSubstr("FILE_SCHEMA(('AUTOMOTIVE_DESIGN_CC2'));"));
}

// ---- Sections

TEST(ExchangeReader, ReadsSeveralDataSections) {
    const File file(
        kHeader +
        "DATA('first',('TEST_SCHEMA'));\n#1=ITEM_HOLDER(#2);\nENDSEC;\n"
        "DATA( 'second' , ( 'TEST_SCHEMA' ) ) ;\n#2=ITEM('b');\nENDSEC;\n"
        "DATA('third',('TEST_SCHEMA'));\n#3=ITEM_HOLDER(#2);\nENDSEC;\nEND-ISO-10303-21;\n");
    file.ExpectRight();
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 3U);
    EXPECT_EQ(InstanceIn(Attribute(file[1], "item")), InstanceIn(file[2]));
    EXPECT_EQ(InstanceIn(Attribute(file[3], "item")), InstanceIn(file[2]));
    const File again(Written(file));
    again.ExpectRight();
    EXPECT_EQ(Written(again), Written(file));
}

const std::string kAnchors =
    "ANCHOR;\n<product>=#1;\n<list>=(#1,'ENDSEC;',.A.,$){tag:'x'}{t2:(1.,2)};\n<a-b.c>='it''s';\n<"
    "1234>=<other.stp#anchor>;\n<gone>=#100;\nENDSEC;\n";
const std::string kReferences =
    "REFERENCE;\n#0100=<http://www.example.com/a%20b.stp#x>;\n@5=<#y>;\nENDSEC;\n";

TEST(ExchangeReader, KeepsSectionsOfTheThirdEdition) {
    std::string sections = kAnchors + kReferences;
    sections.insert(sections.find("ENDSEC;\nREFERENCE"), "/* ' ENDSEC; */ ");
    const File file(kHeader + sections + "DATA;\n#1=ITEM('a');\nENDSEC;\nEND-ISO-10303-21;\n");
    file.ExpectRight();
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 1U);
    EXPECT_THAT(Written(file), HasSubstr("ENDSEC;\n" + kAnchors + kReferences +
                                         "DATA;\n#1=ITEM('a');\nENDSEC;\nEND-ISO-10303-21;\n"));
}

// An address may contain apostrophes and the characters that begin a comment elsewhere.
TEST(ExchangeReader, KeepsAddressesOfAnyCharacters) {
    for (const char* address :
         {"http://www.example.com/it's", "http://www.example.com/*", "http://a/(;ENDSEC,b)#c"}) {
        for (const char* section : {"ANCHOR;\n<a>=<", "REFERENCE;\n#9=<"}) {
            const std::string kept = section + std::string(address) + ">;\nENDSEC;\n";
            const File file(kHeader + kept + "DATA;\n#1=ITEM('a');\nENDSEC;\nEND-ISO-10303-21;\n");
            file.ExpectRight();
            EXPECT_THAT(Written(file), HasSubstr(kept));
        }
    }
}

TEST(ExchangeReader, AnExternalReferenceIsAValueOfItsOwn) {
    const std::string data =
        "DATA;\n#1=ITEM_HOLDER(#100);\n#2=OWN(@5,(#100,1),T(@5),#PI,@E2);\nENDSEC;\n";
    const File file(kHeader + kAnchors + kReferences + data + "END-ISO-10303-21;\n");
    file.ExpectRight();
    const SdaiPrimitiveH item = Attribute(file[1], "item");
    EXPECT_TRUE(item.exists());
    EXPECT_EQ(exchange::ExternalReference(item), "#100");
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(item), nullptr);
    EXPECT_EQ(static_cast<long>(item), 0);
    EXPECT_EQ(exchange::ExternalReference(file[1]), "");
    EXPECT_THAT(Written(file), HasSubstr(data));
    // It can be written to another attribute, even one declared as an instance.
    SdaiEntityInstance* holder = file.dataSet.model->GetEntityDefinition("ITEM_HOLDER")
                                     ->CreateEntityInstance(file.dataSet.model.get());
    static_cast<SdaiAppInstance*>(holder)->PutAttr("ITEM", item);
    EXPECT_THAT(Written(file), HasSubstr("=ITEM_HOLDER(#100);\n"));
    const File again(Written(file));
    EXPECT_EQ(Written(again), Written(file));
}

TEST(ExchangeReader, AnExternalReferenceNeedsAnAddress) {
    const File unknown(FileOf("#1=ITEM_HOLDER(@7);"));
    ASSERT_EQ(unknown.messages.ErrorCount(), 1U);
    EXPECT_EQ(unknown.messages.Errors()[0].text, "there is no value @7");
    const File twice(kHeader + kReferences +
                     "DATA;\n#100=ITEM('a');\nENDSEC;\nEND-ISO-10303-21;\n");
    ASSERT_EQ(twice.messages.ErrorCount(), 1U);
    EXPECT_EQ(twice.messages.Errors()[0].text, "#100 is an external reference");
    const File anchor(kHeader + "ANCHOR;\n<a>=#7;\nENDSEC;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n");
    ASSERT_EQ(anchor.messages.ErrorCount(), 1U);
    EXPECT_EQ(anchor.messages.Errors()[0].text, "there is no instance #7");
    // Another data set has no address for it.
    const File source(kHeader + kReferences +
                      "DATA;\n#1=ITEM_HOLDER(#100);\nENDSEC;\nEND-ISO-10303-21;\n");
    const Data other("#1=ITEM_HOLDER($);");
    SdaiEntityInstance* holder = other[1];
    static_cast<SdaiAppInstance*>(holder)->PutAttr("ITEM", Attribute(source[1], "item"));
    std::string problem;
    exchange::ToExchangeText(other.dataSet, &problem);
    EXPECT_EQ(problem,
              "#1 has an external reference without an address, which no exchange file can hold");
}

TEST(ExchangeReader, ALenientReadingDropsAnchorsOfInstancesThatAreNotThere) {
    exchange::ReadOptions options;
    options.lenient = true;
    const File file(kHeader +
                        "ANCHOR;\n<a>=#7;\n<b>=#1;\nENDSEC;\n"
                        "DATA;\n#1=ITEM('a');\nENDSEC;\nEND-ISO-10303-21;\n",
                    options);
    ASSERT_NE(file.dataSet.model, nullptr);
    EXPECT_THAT(file.dataSet.structure.anchors, testing::ElementsAre("<b>=#1"));
    EXPECT_EQ(file.messages.WarningCount(), 1U);
}

TEST(ExchangeReader, KeepsTheNamesOfDataSections) {
    const std::string data =
        "DATA('first',('TEST_SCHEMA'));\n#1=ITEM_HOLDER(#2);\nENDSEC;\nDATA('empty',('TEST_SCHEMA')"
        ");\nENDSEC;\nDATA('third',('TEST_SCHEMA'));\n#2=ITEM('b');\n#3=ITEM('c');\nENDSEC;\nDATA('"
        "last',('TEST_SCHEMA'));\nENDSEC;\nEND-ISO-10303-21;\n";
    const File file(kHeader + data);
    file.ExpectRight();
    EXPECT_THAT(Written(file), testing::EndsWith(data));
}

TEST(ExchangeReader, TellsThatASignatureIsNotKept) {
    const std::string signature = "SIGNATURE\n" + std::string(10000, 'A') + "==\nENDSEC;\n";
    const File file(FileOf("#1=ITEM('a');") + signature + signature);
    EXPECT_EQ(file.messages.ErrorCount(), 0U);
    EXPECT_EQ(file.messages.WarningCount(), 2U);
    EXPECT_THAT(file.messages.Warnings()[0].text, HasSubstr("signature is not kept"));
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 1U);
    EXPECT_THAT(Written(file), testing::Not(HasSubstr("SIGNATURE")));
}

TEST(ExchangeReader, KeepsScopes) {
    const std::string data =
        "DATA;\n#1=ITEM('first');\n#5=&SCOPE\n#2=ITEM('inner');\n#4=&SCOPE\n#3=ITEM('innermost');"
        "\nENDSCOPE ITEM_HOLDER(#3);\nENDSCOPE /#2,#4/ "
        "ITEM_HOLDER(#2);\n#9=&SCOPE\n#8=&SCOPE\n#7=ITEM('x');\nENDSCOPE ITEM('y');\nENDSCOPE "
        "ITEM('z');\n#6=&SCOPE\nENDSCOPE ITEM('alone');\nENDSEC;\n";
    const File file(kHeader + data + "END-ISO-10303-21;\n");
    file.ExpectRight();
    EXPECT_THAT(Written(file), HasSubstr(data));
}

// In the first edition an instance may have others in its scope.
TEST(ExchangeReader, ReadsScopes) {
    const Data file(
        "#1=&SCOPE\n#2=ITEM('inner');\n#3=&SCOPE #4=ITEM('innermost'); ENDSCOPE ITEM_HOLDER(#4);\n"
        "ENDSCOPE /#2,#3/ ITEM_HOLDER(#2);\n#5=ITEM_HOLDER(#2);");
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 5U);
    EXPECT_EQ(TextIn(Attribute(Attribute(file[1], "item"), "name")), "inner");
    EXPECT_EQ(TextIn(Attribute(Attribute(file[3], "item"), "name")), "innermost");
    EXPECT_EQ(TextIn(Attribute(Attribute(file[5], "item"), "name")), "inner");
}

TEST(ExchangeReader, ReadsCommentsBehindTheEndOfAScope) {
    for (const char* exported : {"/* c */", " /* c */ /#2/", "/#2/ /* c */"}) {
        const Data file("#1=&SCOPE\n#2=ITEM('inner');\nENDSCOPE" + std::string(exported) +
                        "ITEM_HOLDER(#2);");
        EXPECT_EQ(TextIn(Attribute(Attribute(file[1], "item"), "name")), "inner") << exported;
    }
}

TEST(ExchangeReader, ReadsAnEmptyDataSection) {
    const File file(FileOf(""));
    file.ExpectRight();
    SdaiModel* model = file.dataSet.model.get();
    EXPECT_EQ(file.dataSet.model->InstanceCount(), 0U);
    const SdaiEntity* item = model->GetEntityDefinition("ITEM");
    EXPECT_EQ(item->CreateEntityInstance(model)->GetInstanceNameId(), 1U);
}

// ---- Large files

// The reader reads a file in pieces; a token may be cut by the border between two pieces.
constexpr std::size_t kWindow = 256 * 1024;

class LargeFile {
  public:
    explicit LargeFile(const std::string& content)
        : path_(directory_.Write("large.stp", content)) {}

    exchange::DataSet Read(Messages& messages, const exchange::ReadOptions& options = {}) const {
        return exchange::ReadDataSet(path_, TestSchemas(), options, messages);
    }
    const std::string& Path() const { return path_; }

  private:
    TemporaryDirectory directory_;
    std::string path_;
};

const std::string kManyTokens =
    "#10=EVERYTHING('it''s \\X2\\00E9\\X0\\ \\X\\E9 \xC3\xA9 \\\\ two\r\nlines',-123456789,"
    "+1.5E-003,2.25,.T.,.U.,\"1FAB\",.GREEN.,#20,LENGTH_MEASURE(2.5),(1.,2,3.E5));\r\n"
    "#20=ITEM('a')/* it's * / a comment **/;#30=( RIGHT ($)BASE(*)LEFT(1) );\n"
    "#1234567890123=!USER_DEFINED(*,((#10),(#20,#1234567890123)));\n#40=CURVE('',$,.F.,());";

// Puts the border after `windows` pieces within the tokens above, at each byte or in steps.
void CheckTokensAcross(std::size_t windows, const std::string& padBefore,
                       const std::string& padAfter, char pad, std::size_t step = 1) {
    const Data plain(kManyTokens);
    const std::string all = Written(plain);
    const std::string expected = all.substr(all.find("#10="));
    const std::string start = kHeader + "DATA;\n" + padBefore;
    for (std::size_t at = 0; at <= kManyTokens.size(); at += step) {
        const std::size_t length = windows * kWindow - start.size() - padAfter.size() - at;
        const LargeFile file(start + std::string(length, pad) + padAfter + kManyTokens +
                             "\nENDSEC;\nEND-ISO-10303-21;\n");
        Messages messages;
        const exchange::DataSet dataSet = file.Read(messages);
        ASSERT_EQ(messages.ErrorCount(), 0U) << at << ": " << messages.Errors().front().ToString();
        ASSERT_EQ(messages.WarningCount(), 0U);
        const std::string text = exchange::ToExchangeText(dataSet);
        ASSERT_EQ(text.substr(text.find("#10=")), expected) << at;
    }
}

TEST(ExchangeReaderWindow, ReadsTokensAcrossTheFirstBorder) { CheckTokensAcross(1, "", "", '\n'); }

TEST(ExchangeReaderWindow, ReadsTokensAcrossTheSecondBorder) {
    CheckTokensAcross(2, "#1=TEXT_HOLDER('", "');\n", 'x', 9);
}

TEST(ExchangeReaderWindow, ReadsTokensBehindALongComment) {
    CheckTokensAcross(1, "/* ", "*/", '*', 3);
}

TEST(ExchangeReaderWindow, TellsPlacesBehindTheBorder) {
    for (std::size_t length = kWindow - 300; length < kWindow + 100; length += 7) {
        const std::string start = kHeader + "DATA;\n/*" + std::string(length, '\n') + "*/\n";
        const LargeFile file(start + "#1=ITEM_HOLDER( #2 );\nENDSEC;\nEND-ISO-10303-21;\n");
        Messages messages;
        EXPECT_EQ(file.Read(messages).model, nullptr);
        ASSERT_EQ(messages.ErrorCount(), 1U);
        // Six header lines, the DATA line, the comment with its last line, and this line.
        EXPECT_EQ(messages.Errors()[0].line, 7 + length + 1 + 1);
        EXPECT_EQ(messages.Errors()[0].column, 17U);
        EXPECT_EQ(messages.Errors()[0].file, file.Path());
    }
}

// The window moves 4096 bytes before its border.
TEST(ExchangeReaderWindow, TellsPlacesWhereTheWindowMoves) {
    const std::string before = kHeader + "DATA;\n/*";
    const std::string after = "*/\n#1=ITEM(";
    for (std::size_t at = kWindow - 4096 - 10; at < kWindow - 4096 + 10; ++at) {
        const std::size_t length = at - before.size() - after.size();
        const LargeFile file(before + std::string(length, '\n') + after + "#2);\n#2=ITEM('b');\n" +
                             std::string(kWindow, ' ') + "ENDSEC;\nEND-ISO-10303-21;\n");
        Messages messages;
        EXPECT_NE(file.Read(messages).model, nullptr);
        ASSERT_EQ(messages.WarningCount(), 1U);
        EXPECT_THAT(messages.Warnings()[0].text, HasSubstr("a STRING expected, found an instance"));
        EXPECT_EQ(messages.Warnings()[0].line, 7 + length + 2) << at;
        EXPECT_EQ(messages.Warnings()[0].column, 9U) << at;
    }
}

TEST(ExchangeReaderWindow, TellsPlacesInLongLines) {
    const std::size_t length = 3 * kWindow;
    const LargeFile file(kHeader + "DATA;\n#1=TEXT_HOLDER('" + std::string(length, 'x') +
                         "');#2=ITEM_HOLDER(#3);\nENDSEC;\nEND-ISO-10303-21;\n");
    Messages messages;
    EXPECT_EQ(file.Read(messages).model, nullptr);
    ASSERT_EQ(messages.ErrorCount(), 1U);
    EXPECT_EQ(messages.Errors()[0].line, 8U);
    EXPECT_EQ(messages.Errors()[0].column, 16 + length + 3 + 15 + 1);
}

TEST(ExchangeReaderWindow, ReadsTokensLongerThanAWindow) {
    for (const std::size_t length :
         {kWindow - 20, kWindow, kWindow + 1, 2 * kWindow, 5 * kWindow + 3}) {
        std::string text;
        while (text.size() < length) text += "0123456789 it's ";
        std::string literal;
        exchange::AppendString(literal, text);
        const std::string digits(length, 'A');
        const LargeFile file(kHeader + "DATA;\n#1=TEXT_HOLDER(" + literal + ");/*" +
                             std::string(length, '*') + "*/#2=BINARY_HOLDER(\"0" + digits +
                             "\");#3=ITEM('" + std::string(length, '\n') + "end');" +
                             std::string(length, ' ') + "ENDSEC;\nEND-ISO-10303-21;\n");
        Messages messages;
        const exchange::DataSet dataSet = file.Read(messages);
        for (const Message& error : messages.Errors()) ADD_FAILURE() << error.ToString();
        ASSERT_NE(dataSet.model, nullptr);
        const auto read = [&dataSet](unsigned long id, const char* name) {
            return SdaiPrimitiveH(dataSet.model->Find(id)).GetAttr(SdaiString(name));
        };
        EXPECT_TRUE(TextIn(read(1, "text")) == text);
        EXPECT_TRUE(ItemOf(read(2, "bits")) == "0" + digits);
        EXPECT_EQ(TextIn(read(3, "name")), "end");
    }
}

TEST(ExchangeReaderWindow, ReadsLongLists) {
    const int count = 200000;
    std::string reals;
    std::string references;
    std::string instances;
    for (int i = 1; i <= count; ++i) {
        reals += (i == 1 ? "" : ",\n") + std::to_string(i) + ".5";
        references += (i == 1 ? "#" : ",#") + std::to_string(count + 10 - i);
        instances += "#" + std::to_string(9 + i) + "=ITEM($);\n";
    }
    const LargeFile file(kHeader + "DATA;\n#1=REALS_HOLDER((" + reals + "));#2=ITEMS_HOLDER((" +
                         references + "));\n" + instances + "ENDSEC;\nEND-ISO-10303-21;\n");
    Messages messages;
    const exchange::DataSet dataSet = file.Read(messages);
    for (const Message& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    ASSERT_NE(dataSet.model, nullptr);
    EXPECT_EQ(dataSet.model->InstanceCount(), 2U + count);
    const std::vector<double> read =
        RealsIn(SdaiPrimitiveH(dataSet.model->Find(1)).GetAttr("REALS"));
    ASSERT_THAT(read, SizeIs(count));
    const SdaiAggrInstance* items = SdaiPrimitiveH(dataSet.model->Find(2)).GetAttr("ITEMS");
    ASSERT_EQ(items->GetMemberCount(), count);
    for (int i = 1; i <= count; ++i) {
        ASSERT_EQ(read[static_cast<std::size_t>(i - 1)], i + 0.5);
        ASSERT_EQ(items->GetInstanceMember(i - 1)->GetInstanceNameId(),
                  static_cast<unsigned long>(count + 10 - i));
    }
}

// The guess where the second half begins: none, or an offset, which may be within a comment.
class ProgressOfReading : public testing::TestWithParam<std::optional<std::uint64_t>> {};

TEST_P(ProgressOfReading, NeverDecreasesAndEndsWithinTheFile) {
    std::string data;
    while (data.size() < 3000000) {
        data += "#" + std::to_string(data.size() + 1) + "=ITEM('some name');\n";
        if (data.size() > 2000000 && data.size() < 2100000) data += "/*;\n#*/";
    }
    const std::string content = FileOf(data);
    const LargeFile file(content);
    std::vector<std::uint64_t> told;
    exchange::ReadOptions options;
    options.threads = 1;
    options.secondHalf = GetParam();
    options.progress = [&told](std::uint64_t bytes) { told.push_back(bytes); };
    Messages messages;
    EXPECT_NE(file.Read(messages, options).model, nullptr);
    ASSERT_GE(told.size(), 2U);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end())) << testing::PrintToString(told);
    EXPECT_GT(told.front(), 0U);
    EXPECT_EQ(told.back(), content.size());
}

INSTANTIATE_TEST_SUITE_P(Halves, ProgressOfReading,
                         testing::Values(std::nullopt, 300000, 1500000, 2050000, 2900000));

// ---- Available schemas

TEST(SchemaCatalog, FindsNamesInAnyCase) {
    const exchange::SchemaCatalog schemas = TestSchemas();
    ASSERT_NE(schemas.Find("TEST_SCHEMA"), nullptr);
    EXPECT_EQ(schemas.Find("Test_Schema"), schemas.Find("TEST_SCHEMA"));
    EXPECT_NE(schemas.Find("automotive_design"), nullptr);
    EXPECT_EQ(schemas.Find("AUTOMOTIVE"), nullptr);
    EXPECT_EQ(schemas.Find(""), nullptr);
}

TEST(SchemaCatalog, NamesThoseAddedAndTheBuiltInOnes) {
    const std::vector<std::string> names = TestSchemas().Names();
    EXPECT_THAT(names, testing::Contains("TEST_SCHEMA"));
    for (const std::string& builtIn : exchange::BuiltInSchemaNames()) {
        EXPECT_THAT(names, testing::Contains(builtIn));
    }
    EXPECT_THAT(names, SizeIs(exchange::BuiltInSchemaNames().size() + 1));
}

TEST(Messages, AreWrittenWithTheirPlace) {
    EXPECT_EQ((Message{"a.stp", 12, 3, "wrong"}).ToString(), "a.stp:12:3: wrong");
    EXPECT_EQ((Message{"a.stp", 0, 0, "missing"}).ToString(), "a.stp: missing");
}

}  // namespace
