// That it is the second platform on which the module runs here, and no other.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "KORUnicodeString.h"
#include "ORXExUtilities.h"
#include "TestValues.h"

namespace {

// The file of the library from which a symbol comes.
std::string LibraryOf(const char* symbol) {
    Dl_info info{};
    void* address = dlsym(RTLD_DEFAULT, symbol);
    if (address == nullptr || dladdr(address, &info) == 0) return "";
    return info.dli_fname;
}

}  // namespace

TEST(SecondPlatform, IsTheOnlyPlatformOfTheProcess) {
    EXPECT_EQ(dlopen(STAND_ALONE_PLATFORM, RTLD_LAZY | RTLD_NOLOAD), nullptr);
    for (const char* symbol : {"cmbflmd", "cmbrcmd"}) {
        EXPECT_NE(LibraryOf(symbol).find("libSecondPlatform"), std::string::npos) << symbol;
    }
    EXPECT_NE(LibraryOf("GetMemberCount").find("libSecondModule"), std::string::npos);
}

TEST(SecondPlatform, ComparesTheTextsOfTheModule) {
    const long before = KORUnicodeString::Comparisons();
    EXPECT_TRUE(IsTrue(ExtractEFFType("S0011option_date"_h, 4_h)));
    const long compared = KORUnicodeString::Comparisons();
    EXPECT_GT(compared, before);
    EXPECT_TRUE(IsFalse(ExtractEFFType("S0011option_date"_h, 2_h)));
    EXPECT_GT(KORUnicodeString::Comparisons(), compared);
}
