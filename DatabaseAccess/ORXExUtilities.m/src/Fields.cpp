// Length-prefixed fields: writing them, and reading their lengths.

#include "Fields.h"

#include <utility>

#include "KORLocale.h"

namespace orx {

SdaiString EncodeFields(std::initializer_list<Field> fields, std::string_view prefix) {
    std::size_t size = prefix.size();
    for (const Field& field : fields) {
        size += static_cast<std::size_t>(kFieldHead + field.value.GetLengthInChar());
    }
    KORUnicodeString text;
    text.Reserve(size);
    text.Append(prefix);
    for (const Field& field : fields) {
        KORUnicodeString length;
        length.BuildFromNum(field.value.GetLengthInChar(), "%04d");
        text.Append(std::string_view(&field.letter, 1)).Append(length).Append(field.value);
    }
    return SdaiString(std::move(text));
}

std::optional<long> LengthAt(const KORUnicodeString& text, long position) {
    long length;
    if (KORLocale::sConvertPartToNum(text, position, kFieldLength, &length) != 1) {
        return std::nullopt;
    }
    return length;
}

}  // namespace orx
