// `orx functions`.

#include <pty.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <thread>

#include "HostTest.h"

namespace {

struct Row {
    std::string name;
    std::string unit;
};

const std::vector<Row> kFunctions{
    {"IsEncodedKey", "ConcatAtb"},
    {"DecodeKey", "ConcatAtb"},
    {"ConcatModelAtb", "ConcatAtb"},
    {"ConcatDocAtb", "ConcatAtb"},
    {"ConcatPartAtb", "ConcatAtb"},
    {"IsPartInCfgitm", "ConfigurationExport"},
    {"IsRangeOrDateEffectivity", "ConfigurationExport"},
    {"GetIDEff", "ConfigurationExport"},
    {"IsRangeType", "ConfigurationExport"},
    {"GetRangeValue", "ConfigurationExport"},
    {"IsInfiniteRank", "ConfigurationExport"},
    {"IsDateType", "ConfigurationExport"},
    {"GetStartDate", "ConfigurationExport"},
    {"IsInfiniteDate", "ConfigurationExport"},
    {"GetEndDate", "ConfigurationExport"},
    {"BuildDatedEff", "ConfigurationExport"},
    {"IsPartConfigurated", "ConfigurationExport"},
    {"IsUsedByPart", "ConfigurationExport"},
    {"ORXIdEff", "ConfigurationExport"},
    {"HasAORXValue", "ConfigurationExport"},
    {"ExtractCFGType", "ConfigurationExport"},
    {"ORXIdCfg", "ConfigurationExport"},
    {"ConcatEffAtb", "ConfigurationExport"},
    {"GetValue", "ConfigurationImport"},
    {"GetDate", "ConfigurationImport"},
    {"ExtractEFFType", "ConfigurationImport"},
    {"IsAORXCfg", "ConfigurationImport"},
    {"DecodeEFF", "ConfigurationImport"},
    {"GetExternalName", "GetExternalName"},
    {"GetInst", "GetInst"},
    {"GetItem", "GetItem"},
    {"GetMemberCount", "GetMemberCount"},
    {"ComputeABSPlacement", "GetPlacement"},
    {"GetPlacement0", "GetPlacement"},
    {"GetPlacement1", "GetPlacement"},
    {"GetPlacement2", "GetPlacement"},
    {"Minus", "GetPlacement"},
    {"GetAbsPlacement", "GetPlacement"},
    {"GetRepFromProperty", "GetRepFromProperty"},
    {"GetUniqId", "GetUniqId"},
    {"IsAnAssembly", "IsAnAssembly"},
    {"IsFree", "IsFree"},
    {"PRDDFN_IsIn", "IsIn"},
    {"IsInAssembly", "IsInAssembly"},
    {"IsModelDocLinked", "IsModelDocLinked"},
    {"IsSame0", "IsSame"},
    {"IsSamePart", "IsSame"},
    {"IsSameRelating", "IsSame"},
    {"IsSameRelated", "IsSame"},
    {"IsSameNAUO", "IsSame"},
    {"IsSameShapeRep1", "IsSame"},
    {"IsSameIDT", "IsSame"},
    {"IsSameDocVersion", "IsSameDocVersion"},
    {"IsaNARVOModel", "IsaNARVOModel"},
    {"IsaNARVORepProperty", "IsaNARVOModel"},
    {"IsaNARVOV5Doc", "IsaNARVOV5Doc"},
    {"GetNARVOV5Ext", "IsaNARVOV5Doc"},
    {"QuantifyRef", "QuantifyRef"},
    {"ReadMandatory", "ReadMandatory"},
    {"ReadPartVersion", "ReadPartVersion"},
    {"EncodeNARVOV5Doc", "V5Document"},
    {"IsEncodedNARVOV5", "V5Document"},
    {"DecodeNARVOV5", "V5Document"},
    {"ORXTrunc", "ORXTrunc"},
    {"ORX_GetDocName", "ORX_GetDocName"},
    {"ORX_GetModelId_Exp", "ORX_GetModelId"},
    {"ORX_GetModelId_Imp1", "ORX_GetModelId"},
    {"ORX_GetModelId_Imp2", "ORX_GetModelId"},
    {"ORX_GetModelId_Imp3", "ORX_GetModelId"},
    {"ORX_GetModelName", "ORX_GetModelName"},
    {"IsNewer", "Version"},
    {"IsVersion", "Version"},
    {"RemoveValueVersion", "Version"},
};

// The objects of an output that is one array, or one object per line.
std::vector<nlohmann::json> Objects(const std::string& output) {
    nlohmann::json all = nlohmann::json::parse(output, nullptr, false);
    if (all.is_array()) return {all.begin(), all.end()};
    std::vector<nlohmann::json> objects;
    for (const std::string& line : Lines(output)) objects.push_back(nlohmann::json::parse(line));
    return objects;
}

// Whether a member of the object equals the text.
bool Has(const nlohmann::json& object, const std::string& text) {
    return std::any_of(object.begin(), object.end(),
                       [&](const nlohmann::json& member) { return member == text; });
}

class Functions : public HostTest {};

}  // namespace

TEST_F(Functions, ListsEveryFunctionOnALineOfItsOwn) {
    const OrxResult result = Orx({"functions"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    ASSERT_EQ(kFunctions.size(), 73U);
    for (const Row& row : kFunctions) {
        int found = 0;
        for (const std::string& line : Lines(result.out)) {
            std::istringstream words(line);
            std::string first;
            words >> first;
            // The name may be followed directly by its arguments.
            if (first == row.name || first.rfind(row.name + "(", 0) == 0) ++found;
        }
        EXPECT_EQ(found, 1) << row.name;
    }
}

TEST_F(Functions, GivesTheTableAsJson) {
    const OrxResult result = Orx({"functions", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const std::vector<nlohmann::json> objects = Objects(result.out);
    ASSERT_EQ(objects.size(), 73U);
    for (const Row& row : kFunctions) {
        const auto object = std::find_if(objects.begin(), objects.end(), [&](const auto& one) {
            return one.is_object() && Has(one, row.name);
        });
        EXPECT_NE(object, objects.end()) << row.name;
    }
    // Some units have the name of a function; the object of a function names both.
    for (const nlohmann::json& object : objects) {
        EXPECT_TRUE(std::any_of(kFunctions.begin(), kFunctions.end(), [&](const Row& row) {
            return Has(object, row.name) && Has(object, row.unit);
        })) << object;
    }
}

TEST_F(Functions, TellsTheTraceLabels) {
    const std::vector<nlohmann::json> objects = Objects(Orx({"functions", "--json"}).out);
    const std::pair<std::string, std::string> labels[] = {
        {"GetItem", "SdaiPrimitiveH GetItem ->"},
        // Labels that differ from the usual form.
        {"IsEncodedKey", "SdaiPrimitiveH IsEncodeKey ->"},
        {"GetPlacement0", "void GetPlacement0 ->"},
        {"GetAbsPlacement", "SdaiPrimitiveH GetAbsPlacement->"},
        {"IsSameIDT", "IsSameIDT->"},
    };
    for (const auto& row : labels) {
        EXPECT_TRUE(std::any_of(objects.begin(), objects.end(), [&row](const auto& one) {
            return Has(one, row.first) && Has(one, row.second);
        })) << row.first;
    }
}

TEST_F(Functions, HaveColumnsOnATerminal) {
    int ours = -1;
    int theirs = -1;
    char name[128];
    if (openpty(&ours, &theirs, name, nullptr, nullptr) != 0) {
        GTEST_SKIP() << "there are no pseudo-terminals";
    }
    std::string shown;
    std::thread reader([&] {
        char piece[4096];
        for (ssize_t count = 0; (count = read(ours, piece, sizeof piece)) > 0;) {
            shown.append(piece, static_cast<std::size_t>(count));
        }
    });
    EXPECT_EQ(std::system((std::string("NO_COLOR=1 " ORX_PROGRAM " functions > ") + name).c_str()),
              0);
    close(theirs);
    reader.join();
    close(ours);
    const std::vector<std::string> lines = Lines(shown);
    ASSERT_EQ(lines.size(), 74U);
    EXPECT_TRUE(lines[0].starts_with("function "));
    const std::size_t column = lines[0].find("result");
    for (const std::string& line : lines) {
        EXPECT_EQ(line.find('\t'), std::string::npos);
        EXPECT_TRUE(line[column - 1] == ' ' && line[column] != ' ') << line;
    }
}

TEST_F(Functions, TakesNoFurtherArguments) {
    EXPECT_EQ(Orx({"functions", "GetItem", "GetInst", "x"}).status, 2);
}
