// Every function that takes a text, and the platform's readers of texts.

#include "Input.h"
#include "KORDMNarvo.h"
#include "KORLocale.h"
#include "services/Suggestions.h"

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

// A number that is read and written must read as the same number again.
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
    Require(KORUnicodeString::FromUtf8(text.ToUtf8()) == text, "a text is read back from UTF-8");
    Require(text.ReadBack(text.View()) == text, "a text is read back from its bytes");
    KORUnicodeString whole = part;
    whole.Append(other);
    Require(whole.GetLengthInChar() == part.GetLengthInChar() + other.GetLengthInChar(),
            "lengths add up");
    Require(whole.SubString(part.GetLengthInChar(), other.GetLengthInChar()) == other,
            "what is appended is cut off again");
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
    // Bytes, or characters of any language.
    const bool utf8 = (number & 1) != 0;
    const auto textOf = [utf8](const std::string& bytes) {
        return utf8 ? SdaiString::FromUtf8(bytes) : SdaiString(std::string_view(bytes));
    };
    const SdaiString first = textOf(text);
    const SdaiString second = textOf(other);
    CallFunctions(first, second, number);
    UsePlatform(first, second, static_cast<int>(number));
    return 0;
}
