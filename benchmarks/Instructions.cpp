// Executes the functions and the text operations for counting their instructions: run under
// callgrind, which writes a file of counts for each. benchmarks/instructions.py starts it and
// prints the table.
//
//   orx-instructions MODULE

#include <dlfcn.h>
#include <valgrind/callgrind.h>
#include <climits>
#include <iostream>
#include <string>

#include "KORLocale.h"
#include "ORXExportTable.h"
#include "TypicalCalls.h"

namespace {

constexpr int kCalls = 100;

// Receives results, so that no call is optimized away.
volatile long sink;

template <class Call>
void Count(const std::string& name, Call call) {
    // Anything created on first use is not counted.
    for (int i = 0; i < 3; ++i) call();
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < kCalls; ++i) call();
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

void CountTexts(const std::string& kind, const std::string& characters) {
    const KORUnicodeString text{std::string_view(characters)};
    const KORUnicodeString same{std::string_view(characters)};
    const KORUnicodeString end = text.SubString(text.GetLengthInChar() - 3, 3);
    const auto count = [&kind](const char* operation, auto call) {
        Count(kind + ", " + operation, call);
    };
    count("copy", [&] { sink = KORUnicodeString(text).GetLengthInChar(); });
    count("SubString", [&] { sink = text.SubString(1, INT_MAX).GetLengthInChar(); });
    count("SubString of 4", [&] { sink = text.SubString(1, 4).GetLengthInChar(); });
    count("SearchSubString", [&] { sink = text.SearchSubString(end, 0, KORSearchForward); });
    count("Compare", [&] { sink = text.Compare(same); });
    count("Append", [&] {
        KORUnicodeString twice(text);
        sink = twice.Append(same).GetLengthInChar();
    });
    count("const char*", [&] { sink = text.ConvertToChar()[0]; });
}

}  // namespace

int main(int, char** arguments) {
    void* module = dlopen(arguments[1], RTLD_NOW);
    if (module == nullptr) {
        std::cerr << dlerror() << '\n';
        return 2;
    }
    const TypicalData data;
    for (const orx::Export& function : orx::kExports) {
        const std::string name(function.name);
        WithCall(function, dlsym(module, name.c_str()), ArgumentsOf(function, data),
                 [&name](auto call) {
                     Count(name, [&call] { sink = static_cast<bool>(call().exists()); });
                 });
    }
    CountTexts("short text", "ABC-123456");
    CountTexts("long text", "S0013ABC-123456-01S0001AI000212S0004PART");
    const KORUnicodeString digits("0013");
    Count("text to number", [&digits] {
        long number;
        sink = KORLocale::sConvertStringToNum(digits, &number) + number;
    });
    Count("number to text", [] {
        KORUnicodeString number;
        number.BuildFromNum(13, "%04d");
        sink = number.GetLengthInChar();
    });
}
