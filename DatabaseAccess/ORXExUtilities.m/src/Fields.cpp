// Length-prefixed fields: writing them, and reading their lengths.

#include "Fields.h"

#include "KORLocale.h"

namespace orx {

SdaiString EncodeFields(std::initializer_list<Field> fields, const KORUnicodeString& prefix) {
    int size = prefix.GetLengthInChar();
    for (const Field& field : fields) {
        size += static_cast<int>(kFieldHead) + field.value.GetLengthInChar();
    }
    KORUnicodeString text;
    text.Reserve(static_cast<std::size_t>(size));
    text.Append(prefix);
    for (const Field& field : fields) {
        KORUnicodeString length;
        length.BuildFromNum(field.value.GetLengthInChar(), "%04d");
        text.Append(field.letter).Append(length).Append(field.value);
    }
    return SdaiString(std::move(text));
}

std::optional<long> LengthAt(const KORUnicodeString& text, long position) {
    long length;
    const KORUnicodeString digits = TextAt(text, position, kFieldLength);
    if (KORLocale::sConvertStringToNum(digits, &length) != 1) return std::nullopt;
    return length;
}

}  // namespace orx
