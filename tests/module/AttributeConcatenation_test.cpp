// ConcatModelAtb, ConcatPartAtb and ConcatDocAtb: keys built from the attributes of database
// objects.

#include <gmock/gmock.h>

#include <string>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;

namespace {

constexpr char kConcatModelAtb[] = "SdaiPrimitiveH ConcatModelAtb ->";
constexpr char kConcatPartAtb[] = "SdaiPrimitiveH ConcatPartAtb ->";
constexpr char kConcatDocAtb[] = "SdaiPrimitiveH ConcatDocAtb ->";

const SdaiPrimitiveH kMissing;

// The key of a database object, which is written as in an exchange file.
using Concat = SdaiPrimitiveH(const SdaiPrimitiveH&);
std::string KeyOf(Concat* concat, const std::string& object, const std::string& schema = "cdma") {
    const TestModel model(schema, "#1=" + object + ";");
    return TextIn(concat(model[1]));
}

struct Case {
    const char* object;
    const char* key;
};

void ExpectKeys(Concat* concat, std::initializer_list<Case> cases) {
    for (const auto& [object, key] : cases) EXPECT_EQ(KeyOf(concat, object), key) << object;
}

// A schema with one type of document of that name.
std::string SchemaWith(const std::string& schema, const std::string& type) {
    return "SCHEMA " + schema + "; ENTITY " + type +
           "; S_TYPE_REP : OPTIONAL STRING; S_NAME : OPTIONAL STRING; NOTES : OPTIONAL STRING;"
           " S_FORMAT : OPTIONAL STRING; END_ENTITY; END_SCHEMA;";
}

}  // namespace

// ---- ConcatModelAtb

TEST(ConcatModelAtb, WritesTypeNextRevisionAndNickname) {
    // The name and the software version are not part of the key.
    ExpectKeys(ConcatModelAtb,
               {{"MODEL_OBJECT('Wheel','3D',7,'A','','V5')", "S00023DI00017S0001AS0000"},
                {"MODEL_OBJECT('','2D',10,'AB','left wheel','')",
                 "S00022DI000210S0002ABS0010left wheel"}});
}

TEST(ConcatModelAtb, WritesIntegersAsPlainDecimals) {
    ExpectKeys(ConcatModelAtb,
               {{"MODEL_OBJECT('','',0,'','','')", "S0000I00010S0000S0000"},
                {"MODEL_OBJECT('','',-5,'','','')", "S0000I0002-5S0000S0000"},
                {"MODEL_OBJECT('','',1234567,'','','')", "S0000I00071234567S0000S0000"},
                {"MODEL_OBJECT('','',2147483648,'','','')", "S0000I00102147483648S0000S0000"},
                {"MODEL_OBJECT('','',-9223372036854775808,'','','')",
                 "S0000I0020-9223372036854775808S0000S0000"}});
}

TEST(ConcatModelAtb, WritesAnUnsetAttributeAsAnEmptyField) {
    ExpectKeys(ConcatModelAtb,
               {{"MODEL_OBJECT('Wheel',$,$,$,$,$)", "S0000I0000S0000S0000"},
                {"MODEL_OBJECT('Wheel',$,7,$,'nick',$)", "S0000I00017S0000S0004nick"},
                {"MODEL_OBJECT('Wheel','3D',$,'A',$,$)", "S00023DI0000S0001AS0000"}});
}

TEST(ConcatModelAtb, WritesLengthsWithFourDigits) {
    for (const std::size_t length : {1U, 9U, 10U, 99U, 100U, 999U, 1000U, 9999U}) {
        const std::string digits = std::to_string(length);
        const std::string text(length, 'x');
        EXPECT_EQ(
            KeyOf(ConcatModelAtb, "MODEL_OBJECT('','',1,'" + text + "','end','')"),
            "S0000I00011S" + std::string(4 - digits.size(), '0') + digits + text + "S0003end");
    }
}

TEST(ConcatModelAtb, CountsCharacters) {
    // Each character is one byte, whether an exchange file needs a directive for it or not.
    EXPECT_EQ(KeyOf(ConcatModelAtb, R"(MODEL_OBJECT('','\X\E9t\X\E9',1,'''','\\',''))"),
              "S0003\xE9t\xE9I00011S0001'S0001\\");
}

TEST(ConcatModelAtb, HasNoValueWhenTheModelIsMissing) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ConcatModelAtb(kMissing)), "EMPTY VALUE");
    EXPECT_THAT(trace.Messages(kConcatModelAtb),
                ElementsAre("la valeur retournee est EMPTY VALUE"));
}

TEST(ConcatModelAtb, TracesTheKey) {
    TraceCapture trace;
    KeyOf(ConcatModelAtb, "MODEL_OBJECT('Wheel','3D',7,'A','','V5')");
    EXPECT_THAT(
        trace.Messages(kConcatModelAtb),
        ElementsAre("the ORXmodel existe", "la valeur retournee est S00023DI00017S0001AS0000"));
}

// ---- ConcatPartAtb

TEST(ConcatPartAtb, WritesNumberChangeVersionAndType) {
    ExpectKeys(ConcatPartAtb,
               {{"PART_OBJECT('W-1','A',3,'wheel','a description',$,$,$,$,$)",
                 "S0003W-1S0001AI00013S0005wheel"},
                {"PART_OBJECT('','',-1,'','',$,$,$,$,$)", "S0000S0000I0002-1S0000"}});
}

TEST(ConcatPartAtb, WritesAnUnsetAttributeAsAnEmptyField) {
    ExpectKeys(ConcatPartAtb,
               {{"PART_OBJECT($,$,$,$,$,$,$,$,$,$)", "S0000S0000I0000S0000"},
                {"PART_OBJECT('W-1',$,3,$,$,$,$,$,$,$)", "S0003W-1S0000I00013S0000"}});
}

TEST(ConcatPartAtb, HasNoValueWhenThePartIsMissing) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ConcatPartAtb(kMissing)), "EMPTY VALUE");
    EXPECT_THAT(trace.Messages(kConcatPartAtb), ElementsAre("la valeur retournee est EMPTY VALUE"));
}

TEST(ConcatPartAtb, TracesTheKey) {
    TraceCapture trace;
    KeyOf(ConcatPartAtb, "PART_OBJECT('W-1','A',3,'wheel',$,$,$,$,$,$)");
    EXPECT_THAT(trace.Messages(kConcatPartAtb),
                ElementsAre("the ORXPart existe",
                            "la valeur retournee est S0003W-1S0001AI00013S0005wheel"));
}

// ---- ConcatDocAtb

TEST(ConcatDocAtb, WritesFourFieldsOfATableDOCUMENT) {
    ExpectKeys(ConcatDocAtb, {{"CDM_DOCUMENT('TXT','Manual','see page 3','A4')",
                               "S0003TXTS0006ManualS0010see page 3S0002A4"},
                              {"CDM_DOCUMENT($,$,$,$)", "S0000S0000S0000S0000"}});
}

TEST(ConcatDocAtb, WritesThreeFieldsOfATableDOCCAD) {
    ExpectKeys(ConcatDocAtb,
               {{"CDM_DOCCAD('CAD','Wheel','see page 3')", "S0003CADS0005WheelS0010see page 3"},
                {"CDM_DOCCAD('CAD',$,$)", "S0003CADS0000S0000"}});
}

TEST(ConcatDocAtb, WritesTwoFieldsOfAnyOtherTable) {
    ExpectKeys(ConcatDocAtb,
               {{"CDM_DOCNOTE('NOTE','Wheel','see page 3')", "S0004NOTES0010see page 3"},
                {"CDM_DOCNOTE($,$,$)", "S0000S0000"}});
}

TEST(ConcatDocAtb, TakesTheTableAfterTheFirstUnderscore) {
    static constexpr struct {
        const char* type;
        const char* key;
    } kCases[] = {
        {"PDM_DOCUMENT", "S0001TS0001NS0001OS0001F"},
        {"PDM_DOCCAD", "S0001TS0001NS0001O"},
        // The whole rest of the name counts
        {"PDM_OLD_DOCUMENT", "S0001TS0001O"},
        {"PDM_DOCUMENT_OLD", "S0001TS0001O"},
        {"PDM__DOCCAD", "S0001TS0001O"},
        // and must be equal to a table's name, not a prefix of it or the reverse
        {"PDM_DOCUMENTS", "S0001TS0001O"},
        {"PDM_DOCCADX", "S0001TS0001O"},
        {"PDM_DOC", "S0001TS0001O"},
        {"PDM_", "S0001TS0001O"},
        // The whole name if there is no underscore
        {"DOCUMENT", "S0001TS0001NS0001OS0001F"},
        {"DOCCAD", "S0001TS0001NS0001O"},
        {"SHEET", "S0001TS0001O"},
    };
    for (const auto& [type, key] : kCases) {
        const std::string document = std::string(type) + "('T','N','O','F')";
        EXPECT_EQ(KeyOf(ConcatDocAtb, document, SchemaWith("store", type)), key) << type;
    }
}

TEST(ConcatDocAtb, TellsTheTablesByTheirLetterCase) {
    // Only the database schema has names in lower or mixed case.
    EXPECT_EQ(
        KeyOf(ConcatDocAtb, "PDM_DOCUMENT('T','N','O','F')", SchemaWith("cdma", "pdm_document")),
        "S0001TS0001O");
    EXPECT_EQ(KeyOf(ConcatDocAtb, "PDM_DOCCAD('T','N','O','F')", SchemaWith("cdma", "pdm_Doccad")),
              "S0001TS0001O");
}

TEST(ConcatDocAtb, TakesTheInstancesOwnTypeAndNotASupertype) {
    const TestModel model(
        "SCHEMA store; ENTITY cdm_document; S_TYPE_REP : STRING; S_NAME : STRING; NOTES : STRING;"
        " S_FORMAT : STRING; END_ENTITY;"
        "ENTITY cdm_scan SUBTYPE OF (cdm_document); END_ENTITY; END_SCHEMA;",
        "#1=CDM_SCAN('T','N','O','F');");
    EXPECT_EQ(TextIn(ConcatDocAtb(model[1])), "S0001TS0001O");
}

TEST(ConcatDocAtb, HasNoValueWhenTheDocumentIsMissing) {
    TraceCapture trace;
    EXPECT_EQ(TextIn(ConcatDocAtb(kMissing)), "EMPTY VALUE");
    EXPECT_THAT(trace.Messages(kConcatDocAtb), ElementsAre("la valeur retournee est EMPTY VALUE"));
}

TEST(ConcatDocAtb, TracesTheTableAndTheKey) {
    {
        TraceCapture trace;
        KeyOf(ConcatDocAtb, "CDM_DOCUMENT('T','N','O','F')");
        EXPECT_THAT(trace.Messages(kConcatDocAtb),
                    ElementsAre("document existe", "storage : CDM_DOCUMENT", "table   : DOCUMENT",
                                " je suis un document DOCUMENT ",
                                "la valeur retournee est S0001TS0001NS0001OS0001F"));
    }
    {
        TraceCapture trace;
        KeyOf(ConcatDocAtb, "CDM_DOCCAD('T','N','O')");
        EXPECT_THAT(trace.Messages(kConcatDocAtb),
                    ElementsAre("document existe", "storage : CDM_DOCCAD", "table   : DOCCAD",
                                "la valeur retournee est S0001TS0001NS0001O"));
    }
    {
        TraceCapture trace;
        KeyOf(ConcatDocAtb, "SHEET('T','N','O','F')", SchemaWith("store", "sheet"));
        EXPECT_THAT(trace.Messages(kConcatDocAtb),
                    ElementsAre("document existe", "storage : SHEET", "table   : SHEET",
                                "la valeur retournee est S0001TS0001O"));
    }
}

// ---- Keys that are decoded again

TEST(ConcatAtb, WritesKeysThatDecodeFieldByField) {
    const TestModel model("cdma", R"(
        #1=MODEL_OBJECT('Wheel','S0001X',-7,'','a nickname',$);
        #2=PART_OBJECT('W 1','I0',12,$,$,$,$,$,$,$);
        #3=CDM_DOCUMENT('TXT','Manual','','A4');
        #4=CDM_DOCCAD('CAD','Wheel','note');
        #5=CDM_DOCNOTE('NOTE','Wheel','note');)");
    const auto text = [](const SdaiPrimitiveH& key, long place) {
        return TextIn(DecodeKey(key, Handle(place)));
    };

    const SdaiPrimitiveH ofModel = ConcatModelAtb(model[1]);
    EXPECT_TRUE(IsTrue(IsEncodedKey(ofModel)));
    EXPECT_EQ(text(ofModel, 1), "S0001X");
    EXPECT_EQ(IntegerIn(DecodeKey(ofModel, 2_h)), -7);
    EXPECT_EQ(text(ofModel, 3), "");
    EXPECT_EQ(text(ofModel, 4), "a nickname");
    EXPECT_EQ(text(ofModel, 5), "EMPTY VALUE");

    const SdaiPrimitiveH ofPart = ConcatPartAtb(model[2]);
    EXPECT_TRUE(IsTrue(IsEncodedKey(ofPart)));
    EXPECT_EQ(text(ofPart, 1), "W 1");
    EXPECT_EQ(text(ofPart, 2), "I0");
    EXPECT_EQ(IntegerIn(DecodeKey(ofPart, 3_h)), 12);
    EXPECT_EQ(text(ofPart, 4), "");
    EXPECT_EQ(text(ofPart, 5), "EMPTY VALUE");

    // The position of the notes depends on the table.
    const SdaiPrimitiveH ofDocument = ConcatDocAtb(model[3]);
    EXPECT_TRUE(IsTrue(IsEncodedKey(ofDocument)));
    EXPECT_EQ(text(ofDocument, 2), "Manual");
    EXPECT_EQ(text(ofDocument, 3), "");
    EXPECT_EQ(text(ofDocument, 4), "A4");
    EXPECT_EQ(text(ofDocument, 5), "EMPTY VALUE");
    EXPECT_EQ(text(ConcatDocAtb(model[4]), 3), "note");
    EXPECT_EQ(text(ConcatDocAtb(model[4]), 4), "EMPTY VALUE");
    EXPECT_EQ(text(ConcatDocAtb(model[5]), 2), "note");
    EXPECT_EQ(text(ConcatDocAtb(model[5]), 3), "EMPTY VALUE");
}

TEST(ConcatAtb, WritesNoKeyForWhatIsMissing) {
    for (Concat* concat : {ConcatModelAtb, ConcatPartAtb, ConcatDocAtb}) {
        EXPECT_TRUE(IsFalse(IsEncodedKey(concat(kMissing))));
    }
}
