// Conversion of names between database form and file form.

#include "FileNames.h"

#include <algorithm>

#include "KORNameConversion.h"

namespace orx {

template <class Routine>
KORUnicodeString NameConversion::Convert(std::string_view bytes, const KORUnicodeString* wide,
                                         std::string_view ending, Routine routine) {
    KORUnicodeString text;
    text.Reserve(bytes.size() + ending.size());
    for (std::string_view rest = bytes;;) {
        const std::size_t length = std::min(rest.find('\0'), rest.size());
        rest.copy(input_.Characters(), length);
        input_.Characters()[length] = '\0';
        routine(input_.Characters(), output_.Characters());
        // The result is exactly as long as the name.
        output_.Characters()[length] = '\0';
        // If there is more, the NUL that ended this piece is part of the name.
        const bool more = length < rest.size();
        text.Append(std::string_view(output_.Characters(), length + (more ? 1 : 0)));
        if (!more) break;
        rest.remove_prefix(length + 1);
    }
    if (wide != nullptr) text = wide->ReadBack(text.View());
    text.Append(ending);
    return text;
}

KORUnicodeString NameConversion::ToFileName(const KORUnicodeString& name, std::string_view ending) {
    return Convert(name.View(), name.IsWide() ? &name : nullptr, ending,
                   [](const char* input, char* output) {
                       int status = 0;  // never read
                       cmbflmd(input, output, &status);
                   });
}

KORUnicodeString NameConversion::ToDatabaseName(const KORUnicodeString& fileName, int start,
                                                int length) {
    if (fileName.IsWide()) {
        const KORUnicodeString part = fileName.SubString(start, length);
        return Convert(part.View(), part.IsWide() ? &part : nullptr, {}, cmbrcmd);
    }
    // One byte per character: the part is converted without copying it first.
    return Convert(fileName.ViewPart(start, length), nullptr, {}, cmbrcmd);
}

}  // namespace orx
