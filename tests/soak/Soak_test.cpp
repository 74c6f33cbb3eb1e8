// Long runs. This program loads the module by name, as an engine does, and is not linked with it.

#include <gtest/gtest.h>
#include <link.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

#include "SeededChoices.h"

namespace {

// The memory in use, in bytes; 0 if the allocator does not report it.
std::size_t MemoryInUse() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

// The resident pages of the process.
long ResidentPages() {
    long all = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident;
}

bool ModuleIsLoaded() {
    bool loaded = false;
    const auto visit = [](dl_phdr_info* library, std::size_t, void* found) {
        const bool isModule = std::strstr(library->dlpi_name, "libORXExUtilities") != nullptr;
        *static_cast<bool*>(found) |= isModule;
        return 0;
    };
    dl_iterate_phdr(visit, &loaded);
    return loaded;
}

long CallCount() {
    const char* count = std::getenv("ORX_SOAK_CALLS");
    return count != nullptr ? std::atol(count) : 200'000;
}

// Creates a world, makes calls on it, and destroys it.
void CallOnAWorld(const calls::Module& module, std::uint64_t seed, long calls) {
    SeededChoices choices(seed);
    RandomWorld world(choices, 40);
    for (long i = 0; i < calls; ++i) {
        const RandomCall call = world.AnyCall();
        module.Call(*call.function, call.arguments);
    }
    module.Call(*orx::FindExport("RemoveValueVersion"), {});
}

}  // namespace

TEST(Soak, MemoryStaysWhereItWas) {
    constexpr long kCallsOnAWorld = 1'000;
    constexpr int kStages = 10;
    const long worlds = CallCount() / kCallsOnAWorld / kStages;
    ASSERT_GT(worlds, 0);
    const calls::Module module("");
    std::uint64_t seed = 0;
    const auto stage = [&] {
        for (long i = 0; i < worlds; ++i) CallOnAWorld(module, ++seed, kCallsOnAWorld);
    };
    stage();
    const std::size_t memory = MemoryInUse();
    [[maybe_unused]] const long pages = ResidentPages();
    for (int i = 1; i < kStages; ++i) {
        stage();
        std::cout << (i + 1) * worlds * kCallsOnAWorld << " calls, " << MemoryInUse()
                  << " bytes in use, " << ResidentPages() << " pages resident\n";
    }
    // Memory kept for reuse: the tables of document management, the line of the trace.
    constexpr std::size_t kAllowedBytes = 64 * 1024;
    EXPECT_LE(MemoryInUse(), memory + kAllowedBytes);
#if !defined(__SANITIZE_ADDRESS__)  // which keeps freed memory to detect its use
    constexpr long kAllowedPages = 2'048;
    EXPECT_LE(ResidentPages(), pages + kAllowedPages);
#endif
}

TEST(Soak, TheModuleIsLoadedAndUnloadedAgainAndAgain) {
    const auto loadCallUnload = [](std::uint64_t seed) {
        {
            const calls::Module module("");
            EXPECT_TRUE(ModuleIsLoaded());
            CallOnAWorld(module, seed, 10);
        }
        EXPECT_FALSE(ModuleIsLoaded());
    };
    for (std::uint64_t seed = 1; seed <= 100; ++seed) loadCallUnload(seed);
    const std::size_t memory = MemoryInUse();
    for (std::uint64_t seed = 1; seed <= 1'000; ++seed) loadCallUnload(seed);
    EXPECT_LE(MemoryInUse(), memory + 64 * 1024);
}
