// The allocations of a call on typical data with tracing off: none for a function that tests,
// counts or reads, at most the result itself for one that returns a text.

#include "Allocations.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "ORXExUtilities.h"
#include "ParsedModel.h"
#include "TypicalCalls.h"

namespace {

// The maximum length of a text without a separate buffer.
constexpr std::size_t kInPlace = 15;

// The maximum number of allocations for a result.
long MostAllocations(const orx::Export& function, const SdaiPrimitiveH& result) {
    if (static_cast<const SdaiString&>(result).length() > kInPlace) return 1;
    // A list, with room for a placement.
    if (function.result == orx::Aggregate) return 1;
    return 0;
}

// All functions except those that create instances, for which their model allocates memory.
std::vector<std::string_view> Names() {
    std::vector<std::string_view> names;
    for (const orx::Export& function : orx::kExports) {
        const bool creates = function.name == "GetStartDate" || function.name == "GetEndDate" ||
                             function.name == "BuildDatedEff";
        if (!creates) names.push_back(function.name);
    }
    return names;
}

class TypicalCall : public testing::TestWithParam<std::string_view> {};

INSTANTIATE_TEST_SUITE_P(ExportTable, TypicalCall, testing::ValuesIn(Names()),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace

TEST_P(TypicalCall, AllocatesNoMoreThanItsResult) {
    const orx::Export& function = *orx::FindExport(GetParam());
    void* address = dlsym(RTLD_DEFAULT, std::string(GetParam()).c_str());
    ASSERT_NE(address, nullptr);
    const TypicalData data;
    const TypicalArguments arguments = ArgumentsOf(function, data);
    RemoveValueVersion();
    WithCall(function, address, arguments, [&](auto call) {
        // Extents are created by the first call, and IsVersion stores what it sees.
        call();
        const AllocationCounter allocations;
        const SdaiPrimitiveH result = call();
        const long count = allocations.Count();
        EXPECT_LE(count, MostAllocations(function, result));
    });
    RemoveValueVersion();
}
