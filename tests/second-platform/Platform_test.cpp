// Verifies that the module runs on the second platform here, and on no other.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "KORUnicodeString.h"
#include "Models.h"
#include "ORXExUtilities.h"
#include "TestValues.h"

namespace {

// The file of the library that contains a symbol.
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

// What the module leaves to the platform, each in a call that cannot do without.
TEST(SecondPlatform, ComparesCutsFormatsAndReadsNumbersForTheModule) {
    using Operation = KORUnicodeString::Operation;
    const auto isLeftTo = [](Operation operation, auto call) {
        const long before = KORUnicodeString::Count(operation);
        call();
        return KORUnicodeString::Count(operation) > before;
    };
    const auto extract = [] { EXPECT_TRUE(IsTrue(ExtractEFFType("S0011option_date"_h, 4_h))); };
    EXPECT_TRUE(isLeftTo(Operation::Compare, extract));
    EXPECT_TRUE(isLeftTo(Operation::Cut, extract));
    EXPECT_TRUE(isLeftTo(Operation::ReadNumber, extract));
    EXPECT_TRUE(isLeftTo(Operation::Cut, [] { ORXTrunc("trolley"_h, 4_h); }));
    EXPECT_TRUE(isLeftTo(Operation::Compare, [] { IsaNARVOV5Doc("doc.KORShape"_h); }));

    const std::unique_ptr<SdaiModel> model = NewModel("cdma");
    const SdaiPrimitiveH part =
        model->GetEntityDefinition("part_object")->CreateEntityInstance(model.get());
    EXPECT_TRUE(isLeftTo(Operation::Format, [&] { EXPECT_TRUE(IsFalse(IsModelDocLinked(part))); }));
    EXPECT_TRUE(isLeftTo(Operation::Format, [&] { ConcatPartAtb(part); }));
}
