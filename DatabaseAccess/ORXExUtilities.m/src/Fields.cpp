#include "Fields.h"

#include <algorithm>
#include <charconv>
#include <climits>

#include "KORLocale.h"

namespace orx {

namespace {

// The field's letter and length: the length has at least four digits.
struct Head {
    explicit Head(const Field& field) {
        characters[0] = field.letter;
        std::size_t length = field.value.size();
        if (length <= 9999) {
            for (int digit = 4; digit >= 1; --digit, length /= 10) {
                characters[digit] = static_cast<char>('0' + length % 10);
            }
            size = 5;
        } else {
            char* end = std::to_chars(characters + 1, characters + sizeof characters, length).ptr;
            size = static_cast<std::size_t>(end - characters);
        }
    }

    char characters[24];
    std::size_t size;
};

// A position as a place in a text: one that no text reaches stays so.
int Clamped(long number) { return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX)); }

}  // namespace

SdaiString EncodeFields(std::initializer_list<Field> fields, std::string_view prefix) {
    std::size_t size = prefix.size();
    for (const Field& field : fields) size += Head(field).size + field.value.size();
    KORUnicodeString text;
    text.Reserve(size);
    text.Append(prefix);
    for (const Field& field : fields) {
        const Head head(field);
        text.Append(std::string_view(head.characters, head.size)).Append(field.value);
    }
    return SdaiString(std::move(text));
}

std::optional<long> LengthAt(const KORUnicodeString& text, long position) {
    long length = 0;
    if (KORLocale::sConvertStringToNum(TextAt(text, position, kFieldLength), &length) != 1) {
        return std::nullopt;
    }
    return length;
}

KORUnicodeString TextAt(const KORUnicodeString& text, long position, long length) {
    if (position < 0) return {};
    return text.SubString(Clamped(position), Clamped(length));
}

FieldAt ReadField(const KORUnicodeString& text, long position) {
    const long length = LengthAt(text, position + 1).value_or(0);
    return {TextAt(text, position + kFieldHead, length), position + kFieldHead + length};
}

}  // namespace orx
