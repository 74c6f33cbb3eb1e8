// The functions with C++ types, and aggregates as ranges.

#include "ORXFunctions.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <type_traits>
#include <vector>

#include "ORXSuggestion.h"
#include "TestModel.h"

using namespace sdai_names;

namespace {

// A component placed by (1,2,3) in an assembly, with the axes of the assembly.
const TestModel& Assembly() {
    static const TestModel model("AUTOMOTIVE_DESIGN", R"(
        #10=CARTESIAN_POINT('',(1.,2.,3.));
        #11=DIRECTION('',(0.,0.,1.));
        #12=DIRECTION('',(1.,0.,0.));
        #13=AXIS2_PLACEMENT_3D('',#10,#11,#12);
        #20=PRODUCT('P1','Bolt',$,());
        #21=PRODUCT('P2','Nut',$,());)");
    return model;
}

SdaiEntityInstance* InstanceAt(unsigned long id) { return Assembly()[id]; }

}  // namespace

TEST(TypedFunctions, HaveTheTypesOfTheirKinds) {
    static_assert(std::is_same_v<decltype(orx::GetAbsPlacement(nullptr)), std::array<double, 12>>);
    static_assert(std::is_same_v<decltype(orx::ORXTrunc("", 0)), std::string>);
    static_assert(std::is_same_v<decltype(orx::IsEncodedKey("")), SdaiLogical>);
    static_assert(std::is_same_v<decltype(orx::Minus(0)), double>);
    static_assert(std::is_same_v<decltype(orx::GetMemberCount(SdaiPrimitiveH())), long>);
    static_assert(std::is_same_v<decltype(orx::GetStartDate(nullptr, nullptr)),
                                 std::optional<SdaiEntityInstance*>>);
    static_assert(
        std::is_same_v<decltype(orx::ComputeABSPlacement(nullptr, nullptr)), std::vector<double>>);
}

TEST(TypedFunctions, GiveWhatTheFunctionsGive) {
    EXPECT_EQ(orx::ORXTrunc("trolley", 4), "trol");
    EXPECT_EQ(orx::Minus(1.5), -1.5);
    EXPECT_EQ(orx::IsEncodedKey("S0002ABI000212S0000"), sdaiLTRUE);
    EXPECT_EQ(orx::IsEncodedKey("no key"), sdaiLFALSE);
    // Without a link, the placement is the identity.
    EXPECT_EQ(orx::GetAbsPlacement(nullptr),
              (std::array<double, 12>{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(orx::IsFree(InstanceAt(20), "DESCRIPTION"), sdaiLTRUE);
    EXPECT_EQ(static_cast<std::string>(
                  static_cast<const SdaiString&>(orx::GetInst(InstanceAt(20), "NAME")).View()),
              "Bolt");
}

TEST(TypedFunctions, GiveOneOfSeveralKinds) {
    const std::string key = "S0002ABI000212S0000";
    EXPECT_EQ(std::get<std::string>(orx::DecodeKey(key, 1).value()), "AB");
    EXPECT_EQ(std::get<long>(orx::DecodeKey(key, 2).value()), 12);
    EXPECT_FALSE(orx::DecodeKey(key, 0).has_value());
    EXPECT_FALSE(orx::GetEndDate(nullptr, nullptr).has_value());
}

TEST(TypedFunctions, FillLists) {
    EXPECT_EQ(orx::ComputeABSPlacement(nullptr, nullptr).size(), static_cast<std::size_t>([] {
                  SdaiListClassOfSdaiReal list(0, 0);
                  SdaiListClassOfSdaiReal* filled = &list;
                  ComputeABSPlacement(SdaiPrimitiveH(), SdaiPrimitiveH(), filled);
                  return filled->GetMemberCount();
              }()));
}

TEST(Ranges, WalkExtentsAndAggregates) {
    std::vector<std::string> ids;
    for (SdaiEntityInstance* product :
         orx::Extent(*InstanceAt(20)->FindEntityInstanceModel(), "PRODUCT"_name)) {
        ids.emplace_back(static_cast<const SdaiString&>(product->GetAttr("ID"_name)).View());
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"P1", "P2"}));
    const SdaiPrimitiveH coordinates = InstanceAt(10)->GetAttr("COORDINATES"_name);
    double sum = 0;
    for (const double coordinate : orx::Reals(coordinates)) sum += coordinate;
    EXPECT_EQ(sum, 6.0);
    EXPECT_EQ(orx::Members(coordinates).size(), 3U);
    for (const SdaiPrimitiveH& member : orx::Members(coordinates)) {
        EXPECT_EQ(member.UnderlyingTypeName(), "REAL");
    }
    EXPECT_TRUE(orx::Members(SdaiPrimitiveH(7)).empty());
    EXPECT_TRUE(orx::Instances(SdaiPrimitiveH()).empty());
}

TEST(NearestExport, IsTheFunctionThatMayBeMeant) {
    EXPECT_EQ(orx::NearestExport("GetAbsPlacment"), "GetAbsPlacement");
    EXPECT_EQ(orx::NearestExport("IsFre"), "IsFree");
    EXPECT_EQ(orx::NearestExport("Xyzzyxyzzy"), "");
    EXPECT_EQ(orx::NearestExport(""), "");
    EXPECT_EQ(orx::NearestExport(std::string(10'000, 'x')), "");
}
