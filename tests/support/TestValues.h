// Handles from literals, and the contents of handles, for tests on any platform.

#ifndef TESTS_TESTVALUES_H
#define TESTS_TESTVALUES_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "SdaiAggrInstance.h"
#include "SdaiPrimitiveH.h"

// Handles: "text"_h, 12_h, 1.5_h.
inline SdaiPrimitiveH operator""_h(const char* text, std::size_t length) {
    return SdaiString(std::string_view(text, length));
}
inline SdaiPrimitiveH operator""_h(unsigned long long value) { return static_cast<long>(value); }
inline SdaiPrimitiveH operator""_h(long double value) { return static_cast<double>(value); }
inline SdaiPrimitiveH Handle(std::string_view text) { return SdaiString(text); }
inline SdaiPrimitiveH Handle(long value) { return value; }

// The value of a handle, which must be of that kind.
inline std::string TextIn(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "STRING");
    return std::string(static_cast<const SdaiString&>(handle).View());
}
inline long IntegerIn(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "INTEGER");
    return handle;
}
inline double RealIn(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "REAL");
    return handle;
}
inline bool IsTrue(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "LOGICAL");
    return static_cast<bool>(static_cast<const SdaiLogical&>(handle) == sdaiLTRUE);
}
inline bool IsFalse(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "LOGICAL");
    return static_cast<bool>(static_cast<const SdaiLogical&>(handle) == sdaiLFALSE);
}
inline bool IsUnset(const SdaiPrimitiveH& handle) { return !handle.exists(); }
inline SdaiEntityInstance* InstanceIn(const SdaiPrimitiveH& handle) { return handle; }
inline std::vector<double> RealsIn(const SdaiPrimitiveH& handle) {
    std::vector<double> reals;
    const SdaiAggrInstance* members = handle;
    EXPECT_NE(members, nullptr);
    for (long i = 0; members != nullptr && i < members->GetMemberCount(); ++i) {
        reals.push_back(members->GetRealMember(i));
    }
    return reals;
}

#endif
