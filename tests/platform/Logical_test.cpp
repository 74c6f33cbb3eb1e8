// SdaiBoolean and SdaiLogical: the tables of three-valued logic.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "SdaiLogical.h"

namespace {

const SdaiLogical T = sdaiLTRUE;
const SdaiLogical F = sdaiLFALSE;
const SdaiLogical U;

// Distinguishes values without the operators under test.
std::string Name(SdaiLogical value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

}  // namespace

TEST(Boolean, IsFalseUnlessBuiltOtherwise) {
    EXPECT_EQ(static_cast<int>(SdaiBoolean()), 0);
    EXPECT_EQ(static_cast<int>(SdaiBoolean(false)), 0);
    EXPECT_EQ(static_cast<int>(SdaiBoolean(true)), 1);
}

TEST(Boolean, FollowsTheTables) {
    for (const bool a : {false, true}) {
        EXPECT_EQ(static_cast<int>(!SdaiBoolean(a)), !a ? 1 : 0);
        for (const bool b : {false, true}) {
            EXPECT_EQ(static_cast<int>(SdaiBoolean(a) && SdaiBoolean(b)), a && b ? 1 : 0);
            EXPECT_EQ(static_cast<int>(SdaiBoolean(a) || SdaiBoolean(b)), a || b ? 1 : 0);
            EXPECT_EQ(static_cast<int>(SdaiBoolean(a) == SdaiBoolean(b)), a == b ? 1 : 0);
            EXPECT_EQ(static_cast<int>(SdaiBoolean(a) != SdaiBoolean(b)), a != b ? 1 : 0);
        }
    }
}

TEST(Boolean, EqualsTheLogicalOfTheSameTruth) {
    EXPECT_TRUE(sdaiTRUE == sdaiLTRUE);
    EXPECT_FALSE(sdaiTRUE == sdaiLFALSE);
    EXPECT_TRUE(sdaiFALSE == sdaiLFALSE);
    EXPECT_FALSE(sdaiFALSE == sdaiLTRUE);
    // UNKNOWN is neither.
    EXPECT_FALSE(sdaiTRUE == U);
    EXPECT_FALSE(sdaiFALSE == U);
}

TEST(Logical, IsUnknownUnlessBuiltOtherwise) {
    EXPECT_EQ(Name(SdaiLogical()), "UNKNOWN");
    EXPECT_EQ(Name(SdaiLogical(sdaiTRUE)), "TRUE");
    EXPECT_EQ(Name(SdaiLogical(sdaiFALSE)), "FALSE");
    SdaiLogical assigned;
    assigned = sdaiFALSE;
    EXPECT_EQ(Name(assigned), "FALSE");
    assigned = sdaiLTRUE;
    const SdaiLogical copy(assigned);
    EXPECT_EQ(Name(copy), "TRUE");
}

TEST(Logical, FollowsTheTables) {
    const struct {
        SdaiLogical a;
        SdaiLogical b;
        const char* conjunction;
        const char* disjunction;
        bool equal;
    } rows[] = {
        {T, T, "TRUE", "TRUE", true},       {T, U, "UNKNOWN", "TRUE", false},
        {T, F, "FALSE", "TRUE", false},     {U, T, "UNKNOWN", "TRUE", false},
        {U, U, "UNKNOWN", "UNKNOWN", true}, {U, F, "FALSE", "UNKNOWN", false},
        {F, T, "FALSE", "TRUE", false},     {F, U, "FALSE", "UNKNOWN", false},
        {F, F, "FALSE", "FALSE", true},
    };
    for (const auto& [a, b, conjunction, disjunction, equal] : rows) {
        const std::string operands = Name(a) + ", " + Name(b);
        EXPECT_EQ(Name(a && b), conjunction) << operands;
        EXPECT_EQ(Name(a || b), disjunction) << operands;
        EXPECT_EQ(static_cast<int>(a == b), equal ? 1 : 0) << operands;
        EXPECT_EQ(static_cast<int>(a != b), equal ? 0 : 1) << operands;
    }
}

TEST(Logical, NegatesToTheOtherTruthAndKeepsUnknown) {
    EXPECT_EQ(Name(!T), "FALSE");
    EXPECT_EQ(Name(!F), "TRUE");
    EXPECT_EQ(Name(!U), "UNKNOWN");
}

TEST(Logical, EqualsTheBooleanOfTheSameTruth) {
    EXPECT_TRUE(T == sdaiTRUE);
    EXPECT_FALSE(T == sdaiFALSE);
    EXPECT_TRUE(F == sdaiFALSE);
    EXPECT_FALSE(U == sdaiTRUE);
    EXPECT_FALSE(U == sdaiFALSE);
}

TEST(Logical, IsNonZeroOnlyWhenTrue) {
    EXPECT_NE(static_cast<int>(T), 0);
    EXPECT_EQ(static_cast<int>(F), 0);
    EXPECT_EQ(static_cast<int>(U), 0);
    EXPECT_FALSE(U ? true : false);
}

TEST(Logical, IsWrittenByItsName) {
    std::ostringstream stream;
    stream << T << '/' << F << '/' << U;
    EXPECT_EQ(stream.str(), "TRUE/FALSE/UNKNOWN");
}

TEST(Constants, AreThoseOfTheRuntime) {
    EXPECT_EQ(&sdaiTRUE, &KORSdaiStaticGlobalData::sdaiTRUE);
    EXPECT_EQ(&sdaiFALSE, &KORSdaiStaticGlobalData::sdaiFALSE);
    EXPECT_EQ(&sdaiLTRUE, &KORSdaiStaticGlobalData::sdaiLTRUE);
    EXPECT_EQ(&sdaiLFALSE, &KORSdaiStaticGlobalData::sdaiLFALSE);
    EXPECT_EQ(static_cast<int>(sdaiTRUE), 1);
    EXPECT_EQ(static_cast<int>(sdaiFALSE), 0);
    EXPECT_EQ(Name(sdaiLTRUE), "TRUE");
    EXPECT_EQ(Name(sdaiLFALSE), "FALSE");
}
