// Every function that takes a text, and the platform's readers of texts.

#include "Input.h"
#include "KORDMNarvo.h"
#include "KORLocale.h"
#include "Names.h"

namespace {

void CallFunctions(const SdaiString& text, const SdaiString& other, long number) {
    static const host::Session none;
    for (const orx::Export& function : orx::kExports) {
        bool takesText = false;
        RandomCall call{&function, {}};
        for (std::size_t i = 0; i < function.ArgumentCount(); ++i) {
            calls::Argument& argument = call.arguments.emplace_back();
            const orx::Kind kind = function.arguments[i];
            if ((kind & orx::String) != 0) {
                argument.handle = takesText ? other : text;
                takesText = true;
            } else if (kind == orx::Integer) {
                argument.handle = number;
            }
        }
        if (takesText) CallAndCheck(TheModule(), call, none);
    }
}

// A number that is read and written reads as the same again.
template <class Number>
void Convert(const KORUnicodeString& text) {
    Number number{};
    if (KORLocale::sConvertStringToNum(text, &number) == 0) {
        Require(number == Number{}, "what is no number gives 0");
        return;
    }
    Number again{};
    const KORUnicodeString written = KORLocale::sConvertNumToString(number);
    Require(KORLocale::sConvertStringToNum(written, &again) != 0 && again == number,
            "a number that is written reads the same", written.View());
}

void UsePlatform(const KORUnicodeString& text, const KORUnicodeString& other, int number) {
    Convert<long>(text);
    Convert<double>(text);
    KORDMNarvo::HexaToDouble(text);
    const KORUnicodeString part = text.SubString(number, number);
    Require(part.GetLengthInChar() <= text.GetLengthInChar(), "a part is no longer than the whole");
    const int found = text.SearchSubString(other, number, KORSearchForward);
    Require(found < static_cast<int>(text.GetLengthInChar()) + 1, "a part is found in the whole");
    KORUnicodeString stripped = text;
    stripped.Strip(KORStripBoth);
    KORUnicodeString formatted;
    formatted.BuildFromNum(number, text);
    formatted.BuildFromNum(1.5, text);
    kor::DidYouMean(text.View(), {"PRODUCT", std::string(other.View())});
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const long number = input.ConsumeBool() ? input.ConsumeIntegralInRange<long>(-2, 20)
                                            : input.ConsumeIntegral<long>();
    const std::string other = input.ConsumeRandomLengthString();
    const std::string text = input.ConsumeRemainingBytesAsString();
    const SdaiString first{std::string_view(text)};
    const SdaiString second{std::string_view(other)};
    CallFunctions(first, second, number);
    UsePlatform(first, second, static_cast<int>(number));
    return 0;
}
