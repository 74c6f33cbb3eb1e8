// The complete traces of functions that call others: every line in order, with the lines of nested
// calls in their places.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"
#include "TraceTree.h"

namespace {

using Entries = std::vector<TraceEntry>;

const SdaiPrimitiveH kMissing;

// Traces a call and compares the complete trace.
template <class Function>
void ExpectTrace(Function call, const TraceEntry& expected) {
    const TraceCapture trace;
    call();
    EXPECT_THAT(trace.Lines(), testing::ElementsAreArray(LinesOf(expected)));
}

// IsSame0 of two instances of these types.
TraceEntry Compared(const std::string& type1, const std::string& type2, bool same) {
    return Call("IsSame0", {"l'entite1: " + type1, "l'entite2        : " + type2,
                            same ? "IsSame0 retourne sdaiLTRUE" : "IsSame0 retourne sdaiLFALSE"});
}

// IsSame0 with a missing argument.
TraceEntry ComparedWithNothing() { return Call("IsSame0", {"IsSame0 retourne sdaiLFALSE"}); }

TraceEntry GetInstOf(const std::string& type, const std::string& attribute) {
    return Call("GetInst", {"GetInst sur l'entite:" + type, "et l'attribut      :" + attribute});
}

}  // namespace

// ---- Names

namespace {

// #1 to #4 have identifiers; #11 to #13 are sources; #21 to #26 lead to document files or
// elsewhere.
const TestModel& Names() {
    static const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #1=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT($,$,$,());
        #2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('.model',$,$,());
        #3=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('x.model',$,$,());
        #4=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('own.pdf',$,$,());
        #11=EXTERNAL_SOURCE(IDENTIFIER('Right\X\B1Door.model'));
        #12=EXTERNAL_SOURCE(IDENTIFIER('source.pdf'));
        #20=DOCUMENT_FILE('wheel.model','',$,$,'','');
        #21=PROPERTY_DEFINITION('',$,#20);
        #22=PROPERTY_DEFINITION_REPRESENTATION(#21,$);
        #23=PRODUCT_DEFINITION('',$,$,$);
        #24=PROPERTY_DEFINITION('',$,#23);
        #25=PROPERTY_DEFINITION_REPRESENTATION(#24,$);
        #26=PROPERTY_DEFINITION_REPRESENTATION(#23,$);)");
    return model;
}

}  // namespace

TEST(NestedTrace, GetExternalNameReadsTheSourceThenConvertsThenTellsTheName) {
    ExpectTrace(
        [] { GetExternalName(Names()[1], Names()[11]); },
        Call("GetExternalName",
             {GetInstOf("EXTERNAL_SOURCE", "SOURCE_ID"),
              Call("ORX_GetModelName",
                   {"nom rentre Right\xB1"
                    "Door.model",
                    "Conversion file name - >NARVO name ",
                    "Nom du fichier: Right\xB1"
                    "Door.model",
                    "On supprime l'extension .model", "Longueur: 16",
                    "Nom du fichier SANS extension: Right\xB1"
                    "Door",
                    "Longueur: 10", "On remplace les \xB1 par des blancs",
                    "Nom de model traite : Right Door", "le nom du modele retourne: >Right Door<"}),
              " -> nom de fichier retourne :Right Door"}));
}

TEST(NestedTrace, GetExternalNameReadsNoSourceForAnIdentifierOfItsOwn) {
    ExpectTrace([] { GetExternalName(Names()[4], Names()[12]); },
                Call("GetExternalName", {" -> nom de fichier retourne :own.pdf"}));
    ExpectTrace([] { GetExternalName(kMissing, Names()[12]); },
                Call("GetExternalName", {" -> nom de fichier retourne :"}));
    ExpectTrace(
        [] { GetExternalName(Names()[1], kMissing); },
        Call("GetExternalName", {GetInstOf("", "SOURCE_ID"), " -> nom de fichier retourne :"}));
}

TEST(NestedTrace, GetExternalNameConvertsFromSevenCharactersOn) {
    // Six characters would convert to an empty name, which would not be used: only the trace shows
    // it.
    ExpectTrace([] { GetExternalName(Names()[2], kMissing); },
                Call("GetExternalName", {" -> nom de fichier retourne :.model"}));
    ExpectTrace([] { GetExternalName(Names()[3], kMissing); },
                Call("GetExternalName",
                     {Call("ORX_GetModelName",
                           {"nom rentre x.model", "Conversion file name - >NARVO name ",
                            "Nom du fichier: x.model", "On supprime l'extension .model",
                            "Longueur: 7", "Nom du fichier SANS extension: x", "Longueur: 1",
                            "On remplace les \xB1 par des blancs", "Nom de model traite : x",
                            "le nom du modele retourne: >x<"}),
                      " -> nom de fichier retourne :x"}));
}

TEST(NestedTrace, GetRepFromPropertyReadsTwoDefinitionsAndWritesNothingItself) {
    ExpectTrace(
        [] { GetRepFromProperty(Names()[22]); },
        Call("GetRepFromProperty", {GetInstOf("PROPERTY_DEFINITION_REPRESENTATION", "DEFINITION"),
                                    GetInstOf("PROPERTY_DEFINITION", "DEFINITION")}));
    ExpectTrace(
        [] { GetRepFromProperty(Names()[25]); },
        Call("GetRepFromProperty", {GetInstOf("PROPERTY_DEFINITION_REPRESENTATION", "DEFINITION"),
                                    GetInstOf("PROPERTY_DEFINITION", "DEFINITION")}));
    // The path ends at an instance that is not a property definition.
    ExpectTrace([] { GetRepFromProperty(Names()[26]); },
                Call("GetRepFromProperty",
                     {GetInstOf("PROPERTY_DEFINITION_REPRESENTATION", "DEFINITION")}));
    ExpectTrace([] { GetRepFromProperty(kMissing); }, Call("GetRepFromProperty"));
}

TEST(NestedTrace, IsaNARVORepPropertyAsksForTheNameOfTheFileItReaches) {
    ExpectTrace([] { IsaNARVORepProperty(Names()[22]); },
                Call("IsaNARVORepProperty",
                     {GetInstOf("PROPERTY_DEFINITION_REPRESENTATION", "DEFINITION"),
                      GetInstOf("PROPERTY_DEFINITION", "DEFINITION"),
                      Call("IsaNARVOModel",
                           {"IsaNARVOModel sur: wheel.model", "longueur du nom de model: 11",
                            "le . d'extension est trouve en position: 5",
                            "Position du l de .model: 11", "IsaNARVOModel retourne: TRUE"}),
                      " on retourne: TRUE"}));
    ExpectTrace([] { IsaNARVORepProperty(Names()[25]); },
                Call("IsaNARVORepProperty",
                     {GetInstOf("PROPERTY_DEFINITION_REPRESENTATION", "DEFINITION"),
                      GetInstOf("PROPERTY_DEFINITION", "DEFINITION"), " on retourne: FALSE"}));
    ExpectTrace(
        [] { IsaNARVORepProperty(Names()[26]); },
        Call("IsaNARVORepProperty", {GetInstOf("PROPERTY_DEFINITION_REPRESENTATION", "DEFINITION"),
                                     " on retourne: FALSE"}));
    ExpectTrace([] { IsaNARVORepProperty(kMissing); },
                Call("IsaNARVORepProperty", {" on retourne: FALSE"}));
}

TEST(NestedTrace, ORX_GetModelId_ExpMakesAnIdentifierForATypeWithoutNumberAfterReadingItsType) {
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);
        #2=MODEL_OBJECT('Wheel','3D',7,'A','','V5 R19');)");
    const TraceCapture trace;
    ORX_GetModelId_Exp(model[1]);
    // The identifier differs each time.
    std::vector<std::string> lines = trace.Lines();
    ASSERT_GT(lines.size(), 4U);
    const std::string value = "      SdaiPrimitiveH GetUniqId -> valeur rendue = ";
    ASSERT_EQ(lines[4].substr(0, value.size()), value);
    lines[4] = value;
    EXPECT_THAT(lines,
                testing::ElementsAreArray(LinesOf(Call(
                    "ORX_GetModelId_Exp",
                    {"RECUPERATION DE S_TYPE_REP", "RECUPERATION DE S_NEXT",
                     Call("GetUniqId", {"valeur rendue = "}), "RECUPERATION DE C_SOFT_VER",
                     "ON REMPLACE LES BLANCS PAR DES \xB1", "CREATION DE LA CHAINE POUR LA SORTIE",
                     "ORX_GetModelId en mode EXPORT de donnees retourne: "
                     ">EMPTY\xB1VALUE_ORXExchangedRep2_EMPTY VALUE<"}))));

    // If the type has the number, it is read, and no identifier is created.
    ExpectTrace(
        [&] { ORX_GetModelId_Exp(model[2]); },
        Call("ORX_GetModelId_Exp",
             {"RECUPERATION DE S_TYPE_REP", "RECUPERATION DE S_NEXT", "RECUPERATION DE C_SOFT_VER",
              "ON REMPLACE LES BLANCS PAR DES \xB1", "CREATION DE LA CHAINE POUR LA SORTIE",
              "ORX_GetModelId en mode EXPORT de donnees retourne: "
              ">V5\xB1R19_ORXExchangedRep2_V5 R19<"}));
    ExpectTrace(
        [] { ORX_GetModelId_Exp(kMissing); },
        Call("ORX_GetModelId_Exp", {"ORX_GetModelId en mode EXPORT de donnees retourne: ><"}));
}

// ---- Keys of V5 documents

TEST(NestedTrace, EncodeNARVOV5DocPutsTheMarkerBeforeTheKeyOfTheDocument) {
    const TestModel model("cdma", R"(
        #1=CDM_DOCUMENT('T','N','O','F');
        #2=CDM_DOCCAD('T','N','O');)");
    ExpectTrace([&] { EncodeNARVOV5Doc(model[1]); },
                Call("EncodeNARVOV5Doc",
                     {"the Document exists",
                      Call("ConcatDocAtb", {"document existe", "storage : CDM_DOCUMENT",
                                            "table   : DOCUMENT", " je suis un document DOCUMENT ",
                                            "la valeur retournee est S0001TS0001NS0001OS0001F"}),
                      "la valeur retournee est _ORX_S0001TS0001NS0001OS0001F"}));
    ExpectTrace(
        [&] { EncodeNARVOV5Doc(model[2]); },
        Call("EncodeNARVOV5Doc",
             {"the Document exists",
              Call("ConcatDocAtb", {"document existe", "storage : CDM_DOCCAD", "table   : DOCCAD",
                                    "la valeur retournee est S0001TS0001NS0001O"}),
              "la valeur retournee est _ORX_S0001TS0001NS0001O"}));
    ExpectTrace([] { EncodeNARVOV5Doc(kMissing); },
                Call("EncodeNARVOV5Doc", {"la valeur retournee est EMPTY VALUE"}));
}

namespace {

TraceEntry CutToTheMarker(const std::string& text) {
    return Call("ORXTrunc", {"TheLongString" + text, "TheNbOfChar5", "on test la longueur",
                             "on lie la valeur", "Valeur de retour: >" + text.substr(0, 5)});
}

}  // namespace

TEST(NestedTrace, IsEncodedNARVOV5CutsATextThatIsLongEnough) {
    ExpectTrace([] { IsEncodedNARVOV5("_ORX_"_h); },
                Call("IsEncodedNARVOV5", {"the input value exists", CutToTheMarker("_ORX_"),
                                          " Valeur retournee : TRUE"}));
    ExpectTrace([] { IsEncodedNARVOV5("plain text"_h); },
                Call("IsEncodedNARVOV5", {"the input value exists", CutToTheMarker("plain text"),
                                          " Valeur retournee : FALSE"}));
    ExpectTrace([] { IsEncodedNARVOV5("_ORX"_h); },
                Call("IsEncodedNARVOV5", {"the input value exists", " Valeur retournee : FALSE"}));
    ExpectTrace([] { IsEncodedNARVOV5(kMissing); },
                Call("IsEncodedNARVOV5", {" Valeur retournee : FALSE"}));
}

TEST(NestedTrace, DecodeNARVOV5TestsTheKeyAndDecodesWhatFollowsTheMarker) {
    ExpectTrace(
        [] { DecodeNARVOV5("_ORX_S0002ABI000212"_h, 2_h); },
        Call("DecodeNARVOV5",
             {"everything ok : go ahead",
              Call("IsEncodedNARVOV5",
                   {"the input value exists", CutToTheMarker("_ORX_S0002ABI000212"),
                    " Valeur retournee : TRUE"}),
              Call("DecodeKey", {"TheEncodedKey = S0002ABI000212", "ThePlacement = 2",
                                 "CurrPlacement = 1", "Type a lire: S", "Index de debut : 5",
                                 "Longueur a lire: 2", "on saute la valeur lue et on continue",
                                 "CurrPlacement = 2", "Type a lire: I", "Index de debut : 12",
                                 "Longueur a lire: 2", "on a trouve a priori le bon placement",
                                 "Lecture de la valeur entiere: [12]"})}));
    ExpectTrace([] { DecodeNARVOV5("S0002AB"_h, 1_h); },
                Call("DecodeNARVOV5",
                     {"everything ok : go ahead",
                      Call("IsEncodedNARVOV5", {"the input value exists", CutToTheMarker("S0002AB"),
                                                " Valeur retournee : FALSE"})}));
    ExpectTrace([] { DecodeNARVOV5("_ORX_"_h, kMissing); }, Call("DecodeNARVOV5"));
}

// ---- Configurations

namespace {

// Part #1 is the design of item #23 and applied by handler #33. Before these come an item and
// a handler of nothing, and of document #2. The last ones are of #1, too.
constexpr char kConfigurations[] = R"(
    #1=PART_OBJECT('P1',$,$,$,$,(#11,#12),$,$,$,$);
    #2=CDM_DOCUMENT('T','N','O','F');
    #3=PART_OBJECT('P3',$,$,$,$,$,$,$,$,$);
    #11=PART_LINK('L',$,#3,$,$,$,$);
    #12=PART_LINK('L',$,#3,$,$,$,$);
    #21=CONFIGURATION_ITEM('C1',$,$);
    #22=CONFIGURATION_ITEM('C2',$,#2);
    #23=CONFIGURATION_ITEM('C3',$,#1);
    #24=CONFIGURATION_ITEM('C4',$,#1);
    #31=CONFIGURATION_HANDLER('H1',$);
    #32=CONFIGURATION_HANDLER('H2',#2);
    #33=CONFIGURATION_HANDLER('H3',#1);
    #34=CONFIGURATION_HANDLER('H4',#1);
    #41=DATE_EFFECTIVITY('D',(#12),'01022003040506','12312099235959');
    #42=OPTION_EFFECTIVITY('E',(),'option_date','O',$,$,'01022003040506','12312099235959');
    #43=RANGE_EFFECTIVITY('R',$,1,5);)";

const TestModel& Configurations() {
    static const TestModel model("cdma", kConfigurations);
    return model;
}

// The lines of a search up to the third instance, which refers to the part.
Entries WalkToThePart() {
    return {"NO design on the current configuration_item",
            Compared("part_object", "CDM_DOCUMENT", false),
            Compared("part_object", "part_object", true),
            " The same Part has just been retrieved : OK "};
}

Entries Joined(Entries first, const Entries& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TraceEntry Configurated() {
    return Call("IsPartConfigurated",
                Joined(Joined({"Part exists : OK ",
                               "Get the configuration_item entities in schema cdma : OK "},
                              WalkToThePart()),
                       {" >> PART IS CONFIGURATED << "}));
}

TraceEntry NotConfigurated() {
    return Call("IsPartConfigurated",
                {"Part exists : OK ", "Get the configuration_item entities in schema cdma : OK ",
                 "NO design on the current configuration_item",
                 Compared("part_object", "CDM_DOCUMENT", false),
                 Compared("part_object", "part_object", false),
                 Compared("part_object", "part_object", false), ">> Part IS NOT configurated <<"});
}

}  // namespace

TEST(NestedTrace, IsPartInCfgitmComparesThePartWithTheDesign) {
    ExpectTrace([] { IsPartInCfgitm(Configurations()[1], Configurations()[22]); },
                Call("IsPartInCfgitm",
                     {"Part & CfgItem exist : OK ", Compared("part_object", "CDM_DOCUMENT", false),
                      ">> Part NOT IN CfgItem <<"}));
    ExpectTrace([] { IsPartInCfgitm(Configurations()[1], Configurations()[23]); },
                Call("IsPartInCfgitm",
                     {"Part & CfgItem exist : OK ", Compared("part_object", "part_object", true),
                      ">> Part IS IN CfgItem <<"}));
    ExpectTrace(
        [] { IsPartInCfgitm(Configurations()[1], Configurations()[21]); },
        Call("IsPartInCfgitm", {"Part & CfgItem exist : OK ", "NO design on the configuration_item",
                                ">> Part NOT IN CfgItem <<"}));
    ExpectTrace([] { IsPartInCfgitm(Configurations()[1], kMissing); },
                Call("IsPartInCfgitm", {"KO : At least one of the entities doesn't exist",
                                        ">> Part NOT IN CfgItem <<"}));
}

TEST(NestedTrace, IsPartConfiguratedComparesThePartWithEachDesignUpToItsOwn) {
    ExpectTrace([] { IsPartConfigurated(Configurations()[1]); }, Configurated());
    ExpectTrace([] { IsPartConfigurated(Configurations()[3]); }, NotConfigurated());
}

TEST(NestedTrace, IsUsedByPartAsksFirstWhetherThePartIsConfigurated) {
    ExpectTrace([] { IsUsedByPart(Configurations()[1], Configurations()[41]); },
                Call("IsUsedByPart",
                     {"Part & Effectivity exist : OK ", Configurated(),
                      "2 link(s) found in part KORASS", "1 link(s) found in effectivity usage",
                      "ONE LINK FOUND", ">> Effectivity USED by Part<<"}));
    ExpectTrace([] { IsUsedByPart(Configurations()[3], Configurations()[41]); },
                Call("IsUsedByPart",
                     {"Part & Effectivity exist : OK ", NotConfigurated(),
                      "Part not configurated !", ">> Effectivity CANNOT BE USED by Part <<"}));
    ExpectTrace([] { IsUsedByPart(Configurations()[1], kMissing); },
                Call("IsUsedByPart", {"KO : At least one of the entities doesn't exist",
                                      ">> Effectivity NOT USED by Part <<"}));
}

TEST(NestedTrace, ORXIdEffComparesThePartWithEachDesignUpToItsOwn) {
    const Entries begin{"Part & Effectivity exist : OK ",
                        "Get the configuration_item entities in schema cdma : OK "};
    ExpectTrace(
        [] { ORXIdEff(Configurations()[1], Configurations()[41]); },
        Call("ORXIdEff",
             Joined(Joined(begin, WalkToThePart()),
                    {">> la valeur retournee est : S0003ORXS0002C3S0016date_effectivity <<"})));
    // The last item is used for a part that is not a design.
    ExpectTrace(
        [] { ORXIdEff(Configurations()[3], Configurations()[42]); },
        Call("ORXIdEff",
             Joined(begin, {"NO design on the current configuration_item",
                            Compared("part_object", "CDM_DOCUMENT", false),
                            Compared("part_object", "part_object", false),
                            Compared("part_object", "part_object", false),
                            ">> la valeur retournee est : S0003ORXS0002C4S0011option_date <<"})));
}

TEST(NestedTrace, ORXIdCfgComparesTheDesignWithWhatEachHandlerAppliesToUpToItsOwn) {
    const Entries begin{"Configuration Item exists : OK ",
                        "Get the configuration_handelr entities in schema cdma : OK "};
    ExpectTrace(
        [] { ORXIdCfg(Configurations()[24]); },
        Call("ORXIdCfg", Joined(Joined(begin, WalkToThePart()),
                                {">> la valeur retournee est : S0003ORXS0002C4S0002H3 <<"})));
    // The design is the first argument of a comparison: here it is the document.
    ExpectTrace([] { ORXIdCfg(Configurations()[22]); },
                Call("ORXIdCfg",
                     Joined(begin, {"NO design on the current configuration_item",
                                    Compared("CDM_DOCUMENT", "CDM_DOCUMENT", true),
                                    " The same Part has just been retrieved : OK ",
                                    ">> la valeur retournee est : S0003ORXS0002C2S0002H2 <<"})));
    const TestModel model("cdma", R"(
        #1=PART_OBJECT('P1',$,$,$,$,$,$,$,$,$);
        #2=CDM_DOCUMENT('T','N','O','F');
        #3=CONFIGURATION_ITEM('C',$,#2);
        #4=CONFIGURATION_HANDLER('H',#1);)");
    ExpectTrace(
        [&] { ORXIdCfg(model[3]); },
        Call("ORXIdCfg", Joined(begin, {Compared("CDM_DOCUMENT", "part_object", false),
                                        ">> la valeur retournee est : S0003ORXS0001C <<"})));
}

// ---- Dates

namespace {

TraceEntry DateBuilt(const std::string& text, const std::vector<std::string>& fields) {
    return Call("BuildDatedEff",
                {"Depiautage de la date: [" + text + "]", "Annee  : " + fields[0],
                 "Mois   : " + fields[1], "Jour   : " + fields[2], "Heure  : " + fields[3],
                 "Minute : " + fields[4], "Seconde: " + fields[5]});
}

}  // namespace

TEST(NestedTrace, GetStartDateAndGetEndDateBuildTheDateAfterTheirOwnLine) {
    const TestModel target("CONFIG_CONTROL_DESIGN", "#1=DIRECTION('anchor',(0.,0.,1.));");
    const std::string exist = "Effectivity && EntityModel exist : OK ";
    for (const unsigned long id : {41UL, 42UL}) {
        ExpectTrace([&] { GetStartDate(Configurations()[id], target[1]); },
                    Call("GetStartDate",
                         {exist, DateBuilt("01022003040506", {"2003", "1", "2", "4", "5", "6"})}));
        ExpectTrace([&] { GetEndDate(Configurations()[id], target[1]); },
                    Call("GetEndDate", {exist, DateBuilt("12312099235959",
                                                         {"2099", "12", "31", "23", "59", "59"})}));
    }
    // An effectivity without a start gets a date of zeros.
    ExpectTrace([&] { GetStartDate(Configurations()[43], target[1]); },
                Call("GetStartDate", {exist, DateBuilt("", {"0", "0", "0", "0", "0", "0"})}));
    for (const SdaiPrimitiveH& anchor : {SdaiPrimitiveH(), target[1]}) {
        const SdaiPrimitiveH effectivity = anchor.exists() ? kMissing : Configurations()[41];
        ExpectTrace([&] { GetStartDate(effectivity, anchor); },
                    Call("GetStartDate", {"KO : At least one of the entities doesn't exist"}));
        ExpectTrace([&] { GetEndDate(effectivity, anchor); },
                    Call("GetEndDate", {"KO : At least one of the entities doesn't exist"}));
    }
}

// ---- Assemblies

namespace {

// The links of #1 lead to a document, nowhere, to #3 and to #3 again.
const TestModel& Assembly() {
    static const TestModel model("cdma", R"(
        #1=PART_OBJECT('ROOT',$,$,$,$,(#11,#12,#13,#14),$,$,$,$);
        #2=CDM_DOCUMENT('T','N','O','F');
        #3=PART_OBJECT('LEAF',$,$,$,$,$,$,$,$,$);
        #4=PART_OBJECT('EMPTY',$,$,$,$,(),$,$,$,$);
        #11=PART_LINK('L',$,#2,$,$,$,$);
        #12=PART_LINK('L',$,$,$,$,$,$);
        #13=PART_LINK('L',$,#3,$,$,$,$);
        #14=PART_LINK('L',$,#3,$,$,$,$);)");
    return model;
}

}  // namespace

TEST(NestedTrace, IsInAssemblyComparesEachComponentWithTheLeafUpToTheFirstThatIsIt) {
    ExpectTrace([] { IsInAssembly(Assembly()[1], Assembly()[3]); },
                Call("IsInAssembly",
                     {"iRootPart: [ROOT]", "iLeafPart: [LEAF]", "KORASS ok pour [ROOT]",
                      Compared("CDM_DOCUMENT", "part_object", false), ComparedWithNothing(),
                      Compared("part_object", "part_object", true), "Valeur de retour: [TRUE]"}));
    ExpectTrace([] { IsInAssembly(Assembly()[4], Assembly()[3]); },
                Call("IsInAssembly", {"iRootPart: [EMPTY]", "iLeafPart: [LEAF]",
                                      "KORASS ok pour [EMPTY]", "Valeur de retour: [FALSE]"}));
    ExpectTrace([] { IsInAssembly(Assembly()[3], Assembly()[1]); },
                Call("IsInAssembly",
                     {"iRootPart: [LEAF]", "iLeafPart: [ROOT]", "Valeur de retour: [FALSE]"}));
    ExpectTrace(
        [] { IsInAssembly(kMissing, Assembly()[1]); },
        Call("IsInAssembly", {"iRootPart: []", "iLeafPart: [ROOT]", "Valeur de retour: [FALSE]"}));
}

TEST(NestedTrace, QuantifyRefComparesEveryComponentWithTheLeaf) {
    ExpectTrace([] { QuantifyRef(Assembly()[1], Assembly()[3]); },
                Call("QuantifyRef",
                     {"Recuperation de la liste des liens",
                      "On boucle sur la liste des liens pour compter les iLeafPart",
                      Compared("CDM_DOCUMENT", "part_object", false), ComparedWithNothing(),
                      Compared("part_object", "part_object", true),
                      Compared("part_object", "part_object", true), "Valeur de retour: [2]"}));
    ExpectTrace(
        [] { QuantifyRef(Assembly()[4], Assembly()[3]); },
        Call("QuantifyRef", {"Recuperation de la liste des liens", "Valeur de retour: [0]"}));
    ExpectTrace([] { QuantifyRef(Assembly()[3], Assembly()[1]); },
                Call("QuantifyRef", {"Valeur de retour: [0]"}));
}

// ---- Placements

namespace {

// The component #2 in the parent #1, by the link #3. The placement #20 of the parent's shape #8
// takes x to y, y to z and z to x; #30 of the component's shape #10 has no rotation. The first item
// of both shapes is a direction.
constexpr char kLink[] = R"(
    #1=PRODUCT_DEFINITION('','',$,$);
    #2=PRODUCT_DEFINITION('','',$,$);
    #3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#2,$);
    #4=PRODUCT_DEFINITION_SHAPE('','',#1);
    #5=PRODUCT_DEFINITION_SHAPE('','',#2);
    #6=PRODUCT_DEFINITION_SHAPE('','',#3);)";

constexpr char kPlacements[] = R"(
    #8=REPRESENTATION('',(#61,#20),$);
    #10=SHAPE_REPRESENTATION('',(#61,#30),$);
    #11=ITEM_DEFINED_TRANSFORMATION('','',#30,#20);
    #13=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#12,#6);
    #20=AXIS2_PLACEMENT_3D('',#21,#61,#62);
    #21=CARTESIAN_POINT('',(4.,6.,8.));
    #30=AXIS2_PLACEMENT_3D('',#31,#63,#61);
    #31=CARTESIAN_POINT('',(1.,2.,3.));
    #61=DIRECTION('',(1.,0.,0.));
    #62=DIRECTION('',(0.,1.,0.));
    #63=DIRECTION('',(0.,0.,1.));)";

std::string Relationship(const std::string& rep1, const std::string& rep2) {
    return "#12=(REPRESENTATION_RELATIONSHIP('',''," + rep1 + "," + rep2 +
           ")REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#11)"
           "SHAPE_REPRESENTATION_RELATIONSHIP());";
}

// The trace of comparing an item with a placement.
TraceEntry DirectionCompared() { return Compared("DIRECTION", "AXIS2_PLACEMENT_3D", false); }
TraceEntry PlacementCompared(bool same) {
    return Compared("AXIS2_PLACEMENT_3D", "AXIS2_PLACEMENT_3D", same);
}

// GetPlacement0 after the search: #30 is the first item, #20 the second.
Entries Composed(const char* wiring, const Entries& translation, const Entries& list) {
    Entries lines{wiring,
                  "GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_1",
                  "Axis1_Matrix:",
                  "1  0  0",
                  "0  1  0",
                  "0  0  1",
                  "GetPlacement0 - Creation de la matrice TRANSFORM_ITEM_2",
                  "Axis2_Matrix:",
                  "0  1  0",
                  "0  0  1",
                  "1  0  0",
                  "Composition des placements",
                  "Renseignement de la translation",
                  "x_1 = 1",
                  "y_1 = 2",
                  "z_1 = 3",
                  "x_2 = 4",
                  "y_2 = 6",
                  "z_2 = 8"};
    lines = Joined(lines, translation);
    lines = Joined(lines, {"Valuation de la liste de sortie", "Ligne 1", "Ligne 2", "Ligne 3",
                           "Ligne 4", "Positionnement calcule:"});
    lines = Joined(lines, list);
    return Joined(lines, {"...CALCUL POSITIONNEMENT FINI"});
}

// Not crossed: the rotation of #20, and its origin relative to that of #30.
Entries NotCrossed() {
    return Composed("... Cablage NON croise", {"t_1 = 3", "t_2 = 4", "t_3 = 5"},
                    {"0  1  0", "0  0  1", "1  0  0", "3  4  5"});
}
// Crossed: the inverse rotation.
Entries Crossed() {
    return Composed("... Cablage croise", {"t_1 = -3", "t_2 = -4", "t_3 = -5"},
                    {"0  0  1", "1  0  0", "0  1  0", "-3  -4  -5"});
}

const Entries kPlacement0Begins{" CALCUL POSITIONNEMENT ...", "Recuperation des placements"};

TraceEntry Placement0(const Entries& lines) {
    return Call("GetPlacement0", Joined(kPlacement0Begins, lines));
}

class Placement0Trace : public testing::Test {
  protected:
    // The trace of GetPlacement1 or GetPlacement2 around GetPlacement0.
    static void Expect(const char* function, const std::string& rep1, const std::string& rep2,
                       const Entries& lines) {
        const TestModel model("AUTOMOTIVE_DESIGN", kLink + Relationship(rep1, rep2) + kPlacements);
        SdaiListClassOfSdaiReal list(0, 100);
        const bool first = std::string(function) == "GetPlacement1";
        ExpectTrace([&] { (first ? GetPlacement1 : GetPlacement2)(model[13], &list); },
                    Call(function, {"CALCUL POSITIONNEMENT ...", Placement0(lines)}));
    }
};

}  // namespace

TEST_F(Placement0Trace, LooksForTheFirstItemAloneInTheFirstRepresentation) {
    Expect("GetPlacement1", "#10", "#8",
           Joined({DirectionCompared(), PlacementCompared(true)}, NotCrossed()));
    Expect("GetPlacement1", "#8", "#10",
           {DirectionCompared(), PlacementCompared(false),
            "!!! CABLAGE NON CONFORME A LA NORME !!!", "CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE"});
}

TEST_F(Placement0Trace, LooksForTheSecondItemFirstInTheSecondRepresentation) {
    Expect("GetPlacement2", "#10", "#8",
           Joined({DirectionCompared(), PlacementCompared(true)}, NotCrossed()));
    Expect("GetPlacement2", "#8", "#10",
           Joined({DirectionCompared(), PlacementCompared(false), DirectionCompared(),
                   PlacementCompared(true)},
                  Crossed()));
    Expect("GetPlacement2", "#10", "$",
           {"!!! CABLAGE NON CONFORME A LA NORME !!!", "CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE"});
}

// An item of the transformation that is set but not an instance is compared, too, and has no type
// name.
TEST_F(Placement0Trace, ComparesAnItemThatIsSetWhateverItIs) {
    const TestModel model(R"(SCHEMA small;
        ENTITY point; END_ENTITY;
        ENTITY shape; items : LIST OF point; END_ENTITY;
        ENTITY transformation; transform_item_1 : STRING; transform_item_2 : OPTIONAL STRING;
        END_ENTITY;
        ENTITY relationship; transformation_operator : transformation; rep_1, rep_2 : shape;
        END_ENTITY;
        ENTITY occurrence; representation_relation : relationship; END_ENTITY;
        END_SCHEMA;)",
                          R"(
        #1=POINT();
        #2=SHAPE((#1));
        #3=TRANSFORMATION('no point',$);
        #4=RELATIONSHIP(#3,#2,#2);
        #5=OCCURRENCE(#4);)");
    const Entries impossible{"!!! CABLAGE NON CONFORME A LA NORME !!!",
                             "CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE"};
    SdaiListClassOfSdaiReal list(0, 100);
    ExpectTrace(
        [&] { GetPlacement1(model[5], &list); },
        Call("GetPlacement1", {"CALCUL POSITIONNEMENT ...",
                               Placement0(Joined({Compared("POINT", "", false)}, impossible))}));
    // The second item is not set.
    ExpectTrace([&] { GetPlacement2(model[5], &list); },
                Call("GetPlacement2",
                     {"CALCUL POSITIONNEMENT ...",
                      Placement0(Joined({ComparedWithNothing(), Compared("POINT", "", false)},
                                        impossible))}));
    EXPECT_EQ(list.GetMemberCount(), 0);
}

TEST_F(Placement0Trace, TellsThatNothingCanBeDoneWithoutContextOrList) {
    SdaiListClassOfSdaiReal list(0, 100);
    ExpectTrace([&] { GetPlacement1(kMissing, &list); },
                Call("GetPlacement1",
                     {"CALCUL POSITIONNEMENT ...",
                      Call("GetPlacement0", {" CALCUL POSITIONNEMENT ...",
                                             "CALCUL POSITIONNEMENT ABSOLU IMPOSSIBLE"})}));
}

namespace {

// ComputeABSPlacement of the daughter #30 and the mother #20.
TraceEntry Computed() {
    return Call("ComputeABSPlacement",
                {"Creation de la matrice fille", "RelatedAxisMatrix:", "1  0  0", "0  1  0",
                 "0  0  1", "Creation de la matrice mere",
                 "composition des matrices:", "renseignement de la translation", "x_ed = 1",
                 "y_ed = 2", "z_ed = 3", "x_ing = 4", "y_ing = 6", "z_ing = 8",
                 "Valuation de la liste de sortie", "Ligne 1", "Ligne 2", "Ligne 3", "Ligne 4"});
}

const Entries kAbsBegins{" CALCUL POSITIONNEMENT ...", "Nom du schema: AUTOMOTIVE_DESIGN"};
const TraceEntry kContextFound =
    Compared("NEXT_ASSEMBLY_USAGE_OCCURRENCE", "NEXT_ASSEMBLY_USAGE_OCCURRENCE", true);
const Entries kItemDefined{
    "Absolute placement computation", "GetAbsPlacement - ITEM_DEFINED_TRANSFORMATION ",
    " -> RELATING_PRODUCT_DEFINITION OK ", " -> RELATED_PRODUCT_DEFINITION OK ",
    " -> SHAPE_DEFINITION_REPRESENTATION OK "};
const Entries kPlaced{"Affichage du positionnement:", "0  1  0", "0  0  1", "1  0  0", "3  4  5"};
const Entries kDefault{"Use of default placement",
                       "Affichage du positionnement:",
                       "1  0  0",
                       "0  1  0",
                       "0  0  1",
                       "0  0  0"};

// A shape definition representation in the search.
Entries Shape(int id, int productShape, const std::string& definition) {
    return {" - CurrShapeDefRep : #" + std::to_string(id) + "=SHAPE_DEFINITION_REPRESENTATION",
            " - CurrP_D_S : #" + std::to_string(productShape) + "=PRODUCT_DEFINITION_SHAPE",
            " - CurrProdDef : #" + definition};
}

TraceEntry DefinitionsCompared(bool same) {
    return Compared("PRODUCT_DEFINITION", "PRODUCT_DEFINITION", same);
}

// After both shapes: the representations, the comparisons of the wiring, the placements.
Entries Wired(const std::string& rep1, const std::string& rep2, const Entries& comparisons) {
    const Entries begin{"RELATING SHAPE_REPRESENTATION recupere",
                        "RELATED SHAPE_REPRESENTATION recupere",
                        " - RelatingShapeRep : #8=REPRESENTATION",
                        " - RelatedShapeRep : #10=SHAPE_REPRESENTATION",
                        " - ShapeRep1 : #" + rep1,
                        " - ShapeRep2 : #" + rep2};
    return Joined(begin, comparisons);
}

Entries PlacedByItems() {
    return Joined({" - A2P3D_1 : #30=AXIS2_PLACEMENT_3D", " - A2P3D_2 : #20=AXIS2_PLACEMENT_3D",
                   " > External Placement < ", Computed()},
                  kPlaced);
}

Entries Joined(std::initializer_list<Entries> all) {
    Entries joined;
    for (const Entries& entries : all) joined = Joined(joined, entries);
    return joined;
}

void ExpectAbsPlacement(const std::string& data, std::initializer_list<Entries> lines) {
    const TestModel model("AUTOMOTIVE_DESIGN", kLink + data);
    ExpectTrace([&] { GetAbsPlacement(model[3]); }, Call("GetAbsPlacement", Joined(lines)));
}

}  // namespace

TEST(AbsPlacementTrace, NamesTheSchemaBeforeItWalksTheContexts) {
    testing::internal::CaptureStderr();
    // The contexts of a product definition, of no instance, and of the link.
    ExpectAbsPlacement(
        "#71=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,#4);"
        "#72=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,$);" +
            Relationship("#10", "#8") + kPlacements,
        {kAbsBegins,
         {Compared("NEXT_ASSEMBLY_USAGE_OCCURRENCE", "PRODUCT_DEFINITION", false),
          ComparedWithNothing(), kContextFound},
         kItemDefined,
         {"SHAPE_REPRESENTATION of the RELATED part NOT FOUND"},
         kDefault});
    // The only message that is printed without the trace.
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "SHAPE_REPRESENTATION of the RELATING part NOT FOUND\n");
    ExpectAbsPlacement("#71=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION($,#4);",
                       {kAbsBegins,
                        {Compared("NEXT_ASSEMBLY_USAGE_OCCURRENCE", "PRODUCT_DEFINITION", false),
                         "RRWT not found"},
                        kDefault});
}

TEST(AbsPlacementTrace, ComparesNoSideThatIsFound) {
    const Entries ofLink =
        Joined(Shape(73, 6, "3=NEXT_ASSEMBLY_USAGE_OCCURRENCE"),
               {Compared("PRODUCT_DEFINITION", "NEXT_ASSEMBLY_USAGE_OCCURRENCE", false),
                Compared("PRODUCT_DEFINITION", "NEXT_ASSEMBLY_USAGE_OCCURRENCE", false)});
    const Entries sameOrder{Compared("SHAPE_REPRESENTATION", "REPRESENTATION", false),
                            Compared("REPRESENTATION", "REPRESENTATION", true),
                            Compared("SHAPE_REPRESENTATION", "SHAPE_REPRESENTATION", true)};
    // The relating side, the link's own, the relating side again, the related side; the rest is not
    // visited.
    ExpectAbsPlacement(
        "#7=SHAPE_DEFINITION_REPRESENTATION(#4,#8);"
        "#73=SHAPE_DEFINITION_REPRESENTATION(#6,$);"
        "#74=SHAPE_DEFINITION_REPRESENTATION(#4,$);"
        "#9=SHAPE_DEFINITION_REPRESENTATION(#5,#10);"
        "#75=SHAPE_DEFINITION_REPRESENTATION(#5,$);" +
            Relationship("#10", "#8") + kPlacements,
        {kAbsBegins,
         {kContextFound},
         kItemDefined,
         Shape(7, 4, "1=PRODUCT_DEFINITION"),
         {DefinitionsCompared(true)},
         Shape(73, 6, "3=NEXT_ASSEMBLY_USAGE_OCCURRENCE"),
         {Compared("PRODUCT_DEFINITION", "NEXT_ASSEMBLY_USAGE_OCCURRENCE", false)},
         Shape(74, 4, "1=PRODUCT_DEFINITION"),
         {DefinitionsCompared(false)},
         Shape(9, 5, "2=PRODUCT_DEFINITION"),
         {DefinitionsCompared(true)},
         Wired("10=SHAPE_REPRESENTATION", "8=REPRESENTATION", sameOrder),
         PlacedByItems()});
    // The link's own, the related side, the related side again, the relating side.
    ExpectAbsPlacement(
        "#73=SHAPE_DEFINITION_REPRESENTATION(#6,$);"
        "#9=SHAPE_DEFINITION_REPRESENTATION(#5,#10);"
        "#75=SHAPE_DEFINITION_REPRESENTATION(#5,$);"
        "#7=SHAPE_DEFINITION_REPRESENTATION(#4,#8);"
        "#74=SHAPE_DEFINITION_REPRESENTATION(#4,$);" +
            Relationship("#10", "#8") + kPlacements,
        {kAbsBegins,
         {kContextFound},
         kItemDefined,
         ofLink,
         Shape(9, 5, "2=PRODUCT_DEFINITION"),
         {DefinitionsCompared(false), DefinitionsCompared(true)},
         Shape(75, 5, "2=PRODUCT_DEFINITION"),
         {DefinitionsCompared(false)},
         Shape(7, 4, "1=PRODUCT_DEFINITION"),
         {DefinitionsCompared(true)},
         Wired("10=SHAPE_REPRESENTATION", "8=REPRESENTATION", sameOrder),
         PlacedByItems()});
}

namespace {

constexpr char kShapes[] =
    "#7=SHAPE_DEFINITION_REPRESENTATION(#4,#8);#9=SHAPE_DEFINITION_REPRESENTATION(#5,#10);";

Entries BothShapes() {
    return Joined({Shape(7, 4, "1=PRODUCT_DEFINITION"),
                   {DefinitionsCompared(true)},
                   Shape(9, 5, "2=PRODUCT_DEFINITION"),
                   {DefinitionsCompared(true)}});
}

}  // namespace

TEST(AbsPlacementTrace, ComparesTheRepresentationsOfTheRelationshipWithThoseOfTheShapes) {
    const Entries until = Joined({kAbsBegins, {kContextFound}, kItemDefined, BothShapes()});
    ExpectAbsPlacement(kShapes + Relationship("#8", "#10") + kPlacements,
                       {until,
                        Wired("8=REPRESENTATION", "10=SHAPE_REPRESENTATION",
                              {Compared("REPRESENTATION", "REPRESENTATION", true),
                               Compared("SHAPE_REPRESENTATION", "SHAPE_REPRESENTATION", true)}),
                        PlacedByItems()});
    // The second is a different one: both ways are tried.
    ExpectAbsPlacement(
        kShapes + Relationship("#8", "#76") + "#76=PRESENTATION_VIEW('',(),$);" + kPlacements,
        {until,
         Wired("8=REPRESENTATION", "76=PRESENTATION_VIEW",
               {Compared("REPRESENTATION", "REPRESENTATION", true),
                Compared("PRESENTATION_VIEW", "SHAPE_REPRESENTATION", false),
                Compared("PRESENTATION_VIEW", "REPRESENTATION", false),
                "Cannot understand the STEP WILD WEB - 1"}),
         kDefault});
    // The first is a different one.
    ExpectAbsPlacement(
        kShapes + Relationship("#76", "#8") + "#76=PRESENTATION_VIEW('',(),$);" + kPlacements,
        {until,
         Wired("76=PRESENTATION_VIEW", "8=REPRESENTATION",
               {Compared("PRESENTATION_VIEW", "REPRESENTATION", false),
                Compared("REPRESENTATION", "REPRESENTATION", true),
                Compared("PRESENTATION_VIEW", "SHAPE_REPRESENTATION", false),
                "Cannot understand the STEP WILD WEB - 1"}),
         kDefault});
}

TEST(AbsPlacementTrace, TellsACartesianOperatorWithoutLookingForShapes) {
    ExpectAbsPlacement(
        "#7=SHAPE_DEFINITION_REPRESENTATION(#4,#8);"
        "#12=(REPRESENTATION_RELATIONSHIP('','',#10,#8)"
        "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#77)"
        "SHAPE_REPRESENTATION_RELATIONSHIP());"
        "#77=CARTESIAN_TRANSFORMATION_OPERATOR_3D('','','',#62,#63,#31,2.,$);" +
            std::string(kPlacements),
        {kAbsBegins,
         {kContextFound, "Absolute placement computation",
          "GetAbsPlacement - CARTESIAN_TRANSFORMATION_OPERATOR"},
         {"Affichage du positionnement:", "0  1  0", "0  0  1", "1  0  0", "1  2  3"}});
}

TEST(AbsPlacementTrace, TellsThatTheLinkIsMissing) {
    ExpectTrace(
        [] { GetAbsPlacement(kMissing); },
        Call("GetAbsPlacement",
             Joined({" CALCUL POSITIONNEMENT ...", "Input argument not allocated"}, kDefault)));
}

// ---- Identity comparisons

namespace {

// The comparisons of the assembly, each with the lines that it writes up to its decision, for two
// equal and two different instances.
class ComparisonTrace : public testing::Test {
  protected:
    using Function = SdaiPrimitiveH (*)(const SdaiPrimitiveH&, const SdaiPrimitiveH&);

    void Expect(Function function, const char* name, unsigned long same, unsigned long other,
                unsigned long second, const Entries& chain, const std::string& yes,
                const std::string& no) const {
        ExpectTrace([&] { function(model_[same], model_[second]); },
                    Call(name, Joined(chain, {"cas egalite", yes})));
        ExpectTrace([&] { function(model_[other], model_[second]); },
                    Call(name, Joined(chain, {"cas difference", no})));
        ExpectTrace([&] { function(kMissing, model_[second]); }, Call(name, {no}));
        ExpectTrace([&] { function(model_[same], kMissing); }, Call(name, {no}));
    }

    const TestModel model_{"AUTOMOTIVE_DESIGN",
                           kLink + std::string(kShapes) + Relationship("#8", "#10") + kPlacements +
                               "#81=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#1,#2,$);"
                               "#82=ITEM_DEFINED_TRANSFORMATION('','',#30,#20);"
                               "#83=SHAPE_DEFINITION_REPRESENTATION(#5,#84);"
                               "#84=REPRESENTATION('',(),$);"};
    const Entries schema_{"nom du schema : AUTOMOTIVE_DESIGN", "nom garde: AUTOMOTIVE",
                          "apres recuperation de definition"};
};

}  // namespace

TEST_F(ComparisonTrace, IsSamePartTellsTheWayToThePart) {
    Expect(IsSamePart, "IsSamePart", 1, 2, 7,
           Joined(schema_,
                  {"entite1: PRODUCT_DEFINITION", "entite2.DEFINITION : PRODUCT_DEFINITION_SHAPE",
                   "entite2.DEFINITION.DEFINITION : PRODUCT_DEFINITION"}),
           "retourne sdaiLTRUE", " retourne sdaiLFALSE");
}

TEST_F(ComparisonTrace, IsSameRelatingTellsTheWaysToBothParts) {
    Expect(IsSameRelating, "IsSameRelating", 7, 9, 13,
           Joined(schema_, {"entite1.DEFINITION : PRODUCT_DEFINITION_SHAPE",
                            "entite1.DEFINITION.DEFINITION : PRODUCT_DEFINITION",
                            "entite2.REPRESENTED_PRODUCT_RELATION.DEFINITION : "
                            "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
                            "entite2.RELATING_PRODUCT_DEFINITION : PRODUCT_DEFINITION"}),
           "IsSameRelating retourne sdaiLTRUE", "IsSameRelating retourne sdaiLFALSE");
}

TEST_F(ComparisonTrace, IsSameRelatedTellsTheWaysToBothPartsWithItsName) {
    Expect(IsSameRelated, "IsSameRelated", 9, 7, 13,
           Joined(schema_,
                  {"IsSameRelated: entite1.DEFINITION              : PRODUCT_DEFINITION_SHAPE",
                   "IsSameRelated: entite1.DEFINITION.DEFINITION   : PRODUCT_DEFINITION",
                   "IsSameRelated: entite2.REPRESENTED_PRODUCT_RELATION.DEFINITION : "
                   "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
                   "IsSameRelated: entite2.RELATED_PRODUCT_DEFINITION : PRODUCT_DEFINITION"}),
           "IsSameRelated retourne sdaiLTRUE", "IsSameRelated retourne sdaiLFALSE");
}

TEST_F(ComparisonTrace, IsSameNAUOTellsBothLinks) {
    Expect(IsSameNAUO, "IsSameNAUO", 3, 81, 13,
           {"IsSameNAUO: entite1: NEXT_ASSEMBLY_USAGE_OCCURRENCE",
            "IsSameNAUO: entite2.REPRESENTED_PRODUCT_RELATION.DEFINITION: "
            "NEXT_ASSEMBLY_USAGE_OCCURRENCE"},
           "IsSameNAUO retourne sdaiLTRUE", "IsSameNAUO retourne sdaiLFALSE");
}

TEST_F(ComparisonTrace, IsSameShapeRep1TellsBothShapesTheSecondUnderAnotherName) {
    Expect(IsSameShapeRep1, "IsSameShapeRep1", 7, 83, 13,
           {"IsSameShapeRep1: entite1.USED_REPRESENTATION: REPRESENTATION",
            "IsSameNAUO: entite2.REPRESENTATION_RELATION.REP_1: REPRESENTATION"},
           "IsSameShapeRep1 retourne sdaiLTRUE", "IsSameShapeRep1 retourne sdaiLFALSE");
}

TEST_F(ComparisonTrace, IsSameIDTTellsBothTransformations) {
    Expect(IsSameIDT, "IsSameIDT", 11, 82, 12,
           {"IsSameIDT: entite1: ITEM_DEFINED_TRANSFORMATION",
            "IsSameIDT: entite2.TRANSFORMATION_OPERATOR: ITEM_DEFINED_TRANSFORMATION"},
           "IsSameIDT retourne sdaiLTRUE", "IsSameIDT retourne sdaiLFALSE");
}

TEST(ComparisonTraces, IsSameDocVersionTellsBothFormations) {
    const TestModel model(R"(SCHEMA documents;
        ENTITY product_definition_formation; id : STRING; END_ENTITY;
        ENTITY product_definition; formation : product_definition_formation; END_ENTITY;
        TYPE product_or_formation = SELECT (product_definition_formation, product_definition);
        END_TYPE;
        ENTITY document_product_association;
          related_product_or_formation : product_or_formation;
        END_ENTITY;
        END_SCHEMA;)",
                          R"(
        #1=PRODUCT_DEFINITION_FORMATION('A');
        #2=PRODUCT_DEFINITION(#1);
        #3=DOCUMENT_PRODUCT_ASSOCIATION(#1);
        #4=DOCUMENT_PRODUCT_ASSOCIATION(#2);)");
    ExpectTrace([&] { IsSameDocVersion(model[2], model[3]); },
                Call("IsSameDocVersion",
                     {"entite1.FORMATION : PRODUCT_DEFINITION_FORMATION",
                      "entite2.RELATED_PRODUCT_OR_FORMATION : PRODUCT_DEFINITION_FORMATION",
                      "cas egalite", "IsSameDocVersion retourne sdaiLTRUE"}));
    ExpectTrace(
        [&] { IsSameDocVersion(model[2], model[4]); },
        Call("IsSameDocVersion", {"entite1.FORMATION : PRODUCT_DEFINITION_FORMATION",
                                  "entite2.RELATED_PRODUCT_OR_FORMATION : PRODUCT_DEFINITION",
                                  "cas difference", "IsSameDocVersion retourne sdaiLFALSE"}));
}
