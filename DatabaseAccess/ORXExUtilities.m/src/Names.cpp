#include "Names.h"

#include <algorithm>

#include "KORNameConversion.h"

namespace orx {

template <class Routine>
SdaiString NameConversion::Convert(std::string_view name, std::string_view ending,
                                   Routine routine) {
    KORUnicodeString text;
    text.Reserve(name.size() + ending.size());
    for (std::string_view rest = name;;) {
        const std::size_t length = std::min(rest.find('\0'), rest.size());
        rest.copy(input_.Characters(), length);
        input_.Characters()[length] = '\0';
        routine(input_.Characters(), output_.Characters());
        // The result has as many characters as the name.
        output_.Characters()[length] = '\0';
        // A NUL of the name follows it.
        const bool more = length < rest.size();
        text.Append(std::string_view(output_.Characters(), length + (more ? 1 : 0)));
        if (!more) break;
        rest.remove_prefix(length + 1);
    }
    text.Append(ending);
    return SdaiString(std::move(text));
}

SdaiString NameConversion::ToFileName(std::string_view name, std::string_view ending) {
    return Convert(name, ending, [](const char* input, char* output) {
        int status = 0;  // never read
        cmbflmd(input, output, &status);
    });
}

SdaiString NameConversion::ToDatabaseName(std::string_view fileName) {
    return Convert(fileName, {}, cmbrcmd);
}

}  // namespace orx
