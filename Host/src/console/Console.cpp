// Messages of orx.

#include "console/Console.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "DataSets.h"
#include "console/Printable.h"

namespace host {

void Complain(std::string_view message) {
    std::cerr << (HasColours(STDERR_FILENO) ? "\033[1;31morx:\033[0m " : "orx: ");
    WritePrintable(relational::WithoutPasswords(message),
                   [](std::string_view piece) { std::cerr << piece; });
    std::cerr << '\n';
}

void Refuse(std::string_view message) {
    Complain(message);
    throw Unusable();
}

void Tell(const exchange::Messages& messages) {
    for (const exchange::Message& warning : messages.Warnings()) {
        Complain("warning: " + warning.ToString());
    }
    if (messages.WarningCount() > messages.Warnings().size()) {
        Complain("warning: " + std::to_string(messages.WarningCount()) + " warnings in all");
    }
    if (messages.ErrorCount() == 0) return;
    std::string last;
    for (const exchange::Message& error : messages.Errors()) {
        if (!last.empty()) Complain(last);
        last = error.ToString();
    }
    if (messages.ErrorCount() > messages.Errors().size()) {
        Complain(last);
        last = std::to_string(messages.ErrorCount()) + " errors in all";
    }
    // Unless a message says itself what --lenient does.
    const bool mendable = std::all_of(
        messages.Errors().begin(), messages.Errors().end(), [](const exchange::Message& error) {
            return error.mendable && error.text.find(" (--lenient ") == std::string::npos;
        });
    Complain(last + (mendable ? " (--lenient reads what can be read)" : ""));
    throw Unusable();
}

bool Flush() {
    std::cout.flush();
    if (std::cout) return true;
    Complain("the standard output cannot be written");
    return false;
}

bool HasColours(int descriptor) {
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(descriptor) && (noColour == nullptr || *noColour == '\0') &&
           terminal != nullptr && *terminal != '\0' && std::string_view(terminal) != "dumb";
}

std::string Coloured(const std::string& text, Colour colour, bool colours) {
    if (!colours) return text;
    static constexpr const char* kCodes[] = {"\033[2m", "\033[1m", "\033[1;31m"};
    return kCodes[static_cast<int>(colour)] + text + "\033[0m";
}

}  // namespace host
