// Texts with characters beyond ISO 8859-1, in each family of functions: these count, cut and
// compare characters.

#include <gmock/gmock.h>

#include <string>
#include <string_view>

#include "KORDMNarvo.h"
#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;

namespace {

// The text as an argument, and the text of a result.
SdaiPrimitiveH operator""_u(const char* utf8, std::size_t size) {
    return SdaiString::FromUtf8(std::string_view(utf8, size));
}
std::string Utf8In(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "STRING");
    return static_cast<const SdaiString&>(handle).ToUtf8();
}

// A database of a part, model, documents and configuration with such names.
const TestModel& Database() {
    static const TestModel model("cdma", R"(
#1=PART_OBJECT('Łódź','Б',7,'齿轮','name',$,$,$,$,$);
#2=CONFIGURATION_ITEM('Łó','name',#1);
#3=CONFIGURATION_HANDLER('齿😀',#1);
#4=RANGE_EFFECTIVITY('Άξων',$,1,2);
)");
    return model;
}

std::string Put(const char* attribute, const SdaiPrimitiveH& instance, const SdaiPrimitiveH& text) {
    static_cast<SdaiAppInstance*>(InstanceIn(instance))->PutAttr(SdaiString(attribute), text);
    return Utf8In(instance.GetAttr(SdaiString(attribute)));
}

}  // namespace

TEST(WideTexts, StandInKeysWithTheNumberOfTheirCharacters) {
    EXPECT_EQ(Utf8In(ConcatPartAtb(Database()[1])), "S0004ŁódźS0001БI00017S0002齿轮");
    const SdaiPrimitiveH key = "S0004ŁódźS0001БI00017S0003齿😀é"_u;
    EXPECT_TRUE(IsTrue(IsEncodedKey(key)));
    EXPECT_EQ(Utf8In(DecodeKey(key, 1_h)), "Łódź");
    EXPECT_EQ(Utf8In(DecodeKey(key, 2_h)), "Б");
    EXPECT_EQ(IntegerIn(DecodeKey(key, 3_h)), 7);
    EXPECT_EQ(Utf8In(DecodeKey(key, 4_h)), "齿😀é");
    EXPECT_EQ(Utf8In(DecodeKey(key, 5_h)), "EMPTY VALUE");
    EXPECT_EQ(Utf8In(DecodeKey("S0009Ł"_u, 1_h)), "Ł");
    EXPECT_EQ(IntegerIn(DecodeKey("Ł0001S"_u, 1_h)), -1);
    EXPECT_TRUE(IsFalse(IsEncodedKey("Ł0001S"_u)));
    EXPECT_TRUE(IsFalse(IsEncodedKey("S000Ł"_u)));
    // Other digits than 0 to 9 are not a number.
    EXPECT_EQ(IntegerIn(DecodeKey("I0001１"_u, 1_h)), 0);
}

TEST(WideTexts, StandInIdentifiersOfConfigurationsAndEffectivities) {
    const std::string identifier = Utf8In(ORXIdCfg(Database()[2]));
    EXPECT_EQ(identifier, "S0003ORXS0002ŁóS0002齿😀");
    EXPECT_EQ(Utf8In(ORXIdEff(Database()[1], Database()[4])),
              "S0003ORXS0002ŁóS0017range_effectivity");
    EXPECT_EQ(Utf8In(ConcatEffAtb(Database()[4])), "S0005rangeS0004Άξων");

    const TestModel step("AUTOMOTIVE_DESIGN", "#1=CONFIGURATION_ITEM('i','n',$,$,$);");
    Put("DESCRIPTION", step[1], SdaiString::FromUtf8(identifier));
    EXPECT_TRUE(IsTrue(IsAORXCfg(step[1])));
    EXPECT_TRUE(IsTrue(HasAORXValue(step[1])));
    Put("DESCRIPTION", step[1], SdaiString::FromUtf8(identifier + "Ł"));
    EXPECT_TRUE(IsFalse(HasAORXValue(step[1])));

    const SdaiPrimitiveH effectivity = "S0003ORXS0002ŁóS0017range_effectivity"_u;
    EXPECT_TRUE(IsTrue(ExtractCFGType(effectivity, 1_h)));
    EXPECT_TRUE(IsFalse(ExtractCFGType(effectivity, 2_h)));
    EXPECT_TRUE(IsTrue(ExtractEFFType("S0005rangeS0004Άξων"_u, 1_h)));
    EXPECT_TRUE(IsFalse(ExtractEFFType("S0005rangźS0004Άξων"_u, 1_h)));
    EXPECT_EQ(Utf8In(DecodeEFF("S0005rangeS0004Άξων"_u, 1_h)), "Άξων");
    const SdaiPrimitiveH option = "S0012option_rangeS0003óŁ1S0002齿轮"_u;
    EXPECT_EQ(Utf8In(DecodeEFF(option, 2_h)), "óŁ1");
    EXPECT_EQ(Utf8In(DecodeEFF(option, 1_h)), "齿轮");
}

TEST(WideTexts, TellTheKindsOfFiles) {
    EXPECT_TRUE(IsTrue(IsaNARVOModel("Łódź.model"_u)));
    EXPECT_TRUE(IsFalse(IsaNARVOModel("model.Łódź"_u)));
    EXPECT_TRUE(IsFalse(IsaNARVOModel("Łódź.modelł"_u)));
    EXPECT_TRUE(IsTrue(IsaNARVOV5Doc("齿轮.KORź"_u)));
    EXPECT_EQ(Utf8In(GetNARVOV5Ext("齿轮.KORź"_u)), "KORź");
    EXPECT_TRUE(IsFalse(IsaNARVOV5Doc("齿轮.КOR1"_u)));  // the first letter is Cyrillic
    EXPECT_EQ(Utf8In(GetNARVOV5Ext("a.Łódź"_u)), "");
}

TEST(WideTexts, ConvertTheBlanksAmongThem) {
    EXPECT_EQ(Utf8In(ORX_GetDocName("Łódź część ±x"_u, 1_h)), "Łódź±część±±x");
    EXPECT_EQ(Utf8In(ORX_GetDocName("Łódź±część±±x"_u, 0_h)), "Łódź część  x");
    EXPECT_EQ(Utf8In(ORX_GetModelName(" 齿 轮"_u, 1_h)), "±齿±轮.model");
    EXPECT_EQ(Utf8In(ORX_GetModelName("±齿±轮.model"_u, 0_h)), " 齿 轮");
    EXPECT_EQ(Utf8In(ORX_GetModelName("Łódź źźБ"_u, 0_h)), "Łó");  // six characters are removed
    EXPECT_EQ(Utf8In(ORX_GetModelName("😀😀😀😀😀"_u, 0_h)), "");
    // A long name is converted completely.
    std::string blanks;
    std::string file;
    for (int i = 0; i < 50; ++i) {
        blanks += "Ł ó";
        file += "Ł±ó";
    }
    EXPECT_EQ(Utf8In(ORX_GetDocName(SdaiString::FromUtf8(blanks), 1_h)), file);
    EXPECT_EQ(Utf8In(ORX_GetDocName(SdaiString::FromUtf8(file), 0_h)), blanks);
}

TEST(WideTexts, LeaveWhatLooksLikeADirectiveAlone) {
    EXPECT_EQ(Utf8In(ORX_GetDocName("\\X2\\0041\\X0\\ b"_u, 1_h)), "\\X2\\0041\\X0\\±b");
    EXPECT_EQ(Utf8In(ORX_GetDocName("Ł\\X2\\0041\\X0\\ b"_u, 1_h)), "Ł\\X2\\0041\\X0\\±b");
    EXPECT_EQ(Utf8In(ORXTrunc("\\X2\\0141\\X0\\"_u, 3_h)), "\\X2");
    EXPECT_TRUE(IsTrue(IsEncodedKey("S0012\\X2\\0141\\X0\\"_u)));
}

TEST(WideTexts, StandInModelIdentifiers) {
    const SdaiPrimitiveH identifier = "Ł±ó_ORXExchangedRep_12_ORXExchangedRep2_齿±轮"_u;
    EXPECT_EQ(Utf8In(ORX_GetModelId_Imp1(identifier)), "Ł ó");
    EXPECT_EQ(IntegerIn(ORX_GetModelId_Imp2(identifier)), 12);
    EXPECT_EQ(Utf8In(ORX_GetModelId_Imp3(identifier)), "齿 轮");
    const TestModel model(
        "SCHEMA s; ENTITY m; S_TYPE_REP : STRING; S_NEXT : INTEGER;"
        "C_SOFT_VER : STRING; END_ENTITY; END_SCHEMA;",
        "#1=M('Ł 1',3,'Б 1');");
    EXPECT_EQ(Utf8In(ORX_GetModelId_Exp(model[1])), "Б±1_ORXExchangedRep2_Б 1");
}

TEST(WideTexts, StandInKeysOfDocuments) {
    const SdaiPrimitiveH key = "_ORX_S0002ŁóS0001齿"_u;
    EXPECT_TRUE(IsTrue(IsEncodedNARVOV5(key)));
    EXPECT_TRUE(IsFalse(IsEncodedNARVOV5("_ORŁ_"_u)));
    EXPECT_EQ(Utf8In(DecodeNARVOV5(key, 1_h)), "Łó");
    EXPECT_EQ(Utf8In(DecodeNARVOV5(key, 2_h)), "齿");
}

TEST(WideTexts, AreExternalNames) {
    const TestModel model("AUTOMOTIVE_DESIGN",
                          "#1=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('Łódź±x.model',$,$,());\n"
                          "#2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('齿轮.pdf',$,$,());\n"
                          "#3=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('',$,$,());\n"
                          "#4=EXTERNAL_SOURCE(IDENTIFIER('Б±.model'));\n");
    EXPECT_EQ(Utf8In(GetExternalName(model[1], {})), "Łódź x");
    EXPECT_EQ(Utf8In(GetExternalName(model[2], {})), "齿轮.pdf");
    EXPECT_EQ(Utf8In(GetExternalName(model[3], model[4])), "Б ");
}

TEST(WideTexts, AreVersionsOfOneToThreeCharacters) {
    for (const char* version : {"Б", "Бя", "Бя齿", "😀😀😀"}) {
        EXPECT_EQ(Utf8In(ReadPartVersion(SdaiString::FromUtf8(version))), version);
    }
    KORDMNarvo::SetRevVerStartValue(KORUnicodeString::FromUtf8("Я"));
    EXPECT_EQ(Utf8In(ReadPartVersion("Łódź"_u)), "Я");
    KORDMNarvo::SetRevVerStartValue("A");
    EXPECT_EQ(Utf8In(ReadPartVersion("Łódź"_u)), "A");
}

TEST(WideTexts, AreCutAndRead) {
    EXPECT_EQ(Utf8In(ORXTrunc("Łódź"_u, 2_h)), "Łó");
    EXPECT_EQ(Utf8In(ORXTrunc("Łódź"_u, 9_h)), "Łódź");
    EXPECT_EQ(IntegerIn(GetValue("１２"_u)), IntegerIn(GetValue("no number"_h)));
    EXPECT_EQ(Utf8In(GetInst(Database()[1], "S_CHG_NUM"_h)), "Б");
    EXPECT_TRUE(IsFalse(IsFree(Database()[1], "S_CHG_NUM"_h)));
    EXPECT_TRUE(IsUnset(GetInst(Database()[1], "S_CHG_NUМ"_u)));  // the last letter is Cyrillic
}

TEST(WideTexts, AreTracedInTheFormOfExchangeFiles) {
    const TraceCapture trace;
    ORX_GetDocName("Ł b"_u, 1_h);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH ORX_GetDocName ->"),
                ElementsAre("nom rentre \\X2\\0141\\X0\\ b", "Conversion NARVO name -> file name",
                            "Nom de document en base: \\X2\\0141\\X0\\ b",
                            "On remplace les blancs par des \xB1",
                            "Nom de model traite : \\X2\\0141\\X0\\\xB1"
                            "b",
                            "le nom du document retourne: >\\X2\\0141\\X0\\\xB1"
                            "b<"));
}
