#include "Fields.h"

#include <algorithm>
#include <charconv>

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

std::optional<long> LengthAt(std::string_view text, long position) {
    const std::string_view characters = TextAt(text, position, kFieldLength);
    // Nearly always four digits.
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    long length = 0;
    if (std::all_of(characters.begin(), characters.end(), isDigit)) {
        if (characters.empty()) return std::nullopt;
        for (const char c : characters) length = 10 * length + (c - '0');
        return length;
    }
    if (KORLocale::sConvertStringToNum(KORUnicodeString(characters), &length) != 1) {
        return std::nullopt;
    }
    return length;
}

FieldAt ReadField(std::string_view text, long position) {
    const long length = LengthAt(text, position + 1).value_or(0);
    return {TextAt(text, position + kFieldHead, length), position + kFieldHead + length};
}

}  // namespace orx
