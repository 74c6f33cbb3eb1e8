// A first argument of another kind than the function expects.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ORXExUtilities.h"
#include "ParsedModel.h"
#include "TypicalCalls.h"
#include "console/Display.h"

namespace {

// The results that differ from the default of the function.
const std::map<std::string_view, std::string> kResults{
    {"DecodeKey", "'EMPTY VALUE'"},
    {"ConcatModelAtb", "'S0000I0000S0000S0000'"},
    {"ConcatDocAtb", "'S0000S0000'"},
    {"ConcatPartAtb", "'S0000S0000I0000S0000'"},
    {"GetStartDate", "#5"},
    {"ORXIdEff", "'S0003ORXS0000S0011option_date'"},
    {"ORXIdCfg", "'S0003ORXS0000'"},
    {"GetExternalName", "'vault'"},
    {"GetInst", "$"},
    {"GetItem", "#204"},
    {"GetRepFromProperty", "0"},
    {"ReadPartVersion", "'A'"},
    {"EncodeNARVOV5Doc", "'_ORX_S0000S0000'"},
    {"DecodeNARVOV5", "$"},
    {"ORXTrunc", "''"},
    {"ORX_GetModelName", "'.model'"},
    {"ORX_GetModelId_Exp", R"('EMPTY\X\B1VALUE_ORXExchangedRep2_EMPTY VALUE')"},
};

class OtherKind : public testing::TestWithParam<std::string_view> {
  protected:
    // The result of the function, and its list, with a different first argument in the typical
    // call.
    std::string With(const SdaiPrimitiveH& first) const {
        const TypicalData data;
        TypicalArguments arguments = ArgumentsOf(function, data);
        arguments[0] = first;
        std::string text;
        RemoveValueVersion();
        WithCall(function, address, arguments, [&](auto call) {
            text = host::ToText(call(), host::Session());
            text += host::ToText(arguments[2], host::Session());
        });
        RemoveValueVersion();
        return text;
    }

    const orx::Export& function = *orx::FindExport(GetParam());
    void* address = dlsym(RTLD_DEFAULT, std::string(GetParam()).c_str());
};

std::vector<std::string_view> Names() {
    std::vector<std::string_view> names;
    for (const orx::Export& function : orx::kExports) {
        // Functions that take a value handle and read it.
        if (function.ArgumentCount() > 0 && function.name != "GetUniqId" &&
            function.name != "BuildDatedEff") {
            names.push_back(function.name);
        }
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(ExportTable, OtherKind, testing::ValuesIn(Names()),
                         [](const auto& name) { return std::string(name.param); });

TEST_P(OtherKind, ReadsAsNothing) {
    const ParsedModel other("cdma", "#1=CONFIGURATION_ITEM('C',$,$);");
    const bool takesText = (function.arguments[0] & (orx::String | orx::Integer)) != 0;
    const std::string result = With(takesText ? other[1] : "a text"_h);
    const auto row = kResults.find(function.name);
    EXPECT_EQ(result, row != kResults.end() ? row->second + "$" : With({}));
}

// A key read from another kind has no fields, and the text at the position of the first one is not
// a number.
TEST(OtherKind, IsAnEmptyKey) {
    const ParsedModel other("cdma", "#1=CONFIGURATION_ITEM('C',$,$);");
    EXPECT_EQ(IntegerIn(DecodeKey(other[1], 1_h)), -1);
}

}  // namespace
