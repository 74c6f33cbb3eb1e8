#include "Names.h"

#include <algorithm>
#include <cstring>

#include "KORNameConversion.h"

namespace orx {

namespace {

// The conversion routines work on NUL-terminated characters in buffers of this size, which hold a
// name of 80 characters; a longer name is converted piece by piece.
constexpr std::size_t kBufferSize = 81;

template <class Routine>
SdaiString Convert(std::string_view name, std::string_view ending, Routine routine) {
    KORUnicodeString text;
    text.Reserve(name.size() + ending.size());
    while (!name.empty()) {
        char input[kBufferSize] = {};
        char output[kBufferSize];
        const std::size_t size = std::min(name.size(), kBufferSize - 1);
        name.copy(input, size);
        // A NUL among the characters ends a piece and is copied with it.
        const std::size_t piece = std::min(std::strlen(input) + 1, size);
        routine(input, output);
        text.Append(std::string_view(output, piece));
        name.remove_prefix(piece);
    }
    text.Append(ending);
    return SdaiString(std::move(text));
}

}  // namespace

SdaiString ToFileName(std::string_view name, std::string_view ending) {
    return Convert(name, ending, [](const char* input, char* output) {
        int status = 0;
        cmbflmd(input, output, &status);
    });
}

SdaiString ToDatabaseName(std::string_view fileName) { return Convert(fileName, {}, cmbrcmd); }

}  // namespace orx
