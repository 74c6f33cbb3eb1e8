// Texts as they may reach a terminal: without characters that it would act on instead of showing
// them (ISO/IEC 6429 and the controls of Unicode). A file name and a text of the data may hold any.

#ifndef HOST_PRINTABLE_H
#define HOST_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// The first character of a UTF-8 text that is not empty.
struct Character {
    static constexpr char32_t kNone = 0xFFFFFFFF;

    char32_t code;       // kNone for a byte that begins no character
    std::size_t length;  // in bytes
};
Character FirstOf(std::string_view utf8);

// Whether a terminal, or a reader of text, acts on a character: C0 and C1 controls, DEL, marks that
// turn the direction of the text or end a line, characters that show nothing, and none.
bool IsControl(char32_t code);

// Calls write(piece) with one piece of a UTF-8 text after the other, U+FFFD in the place of each
// control character and of each byte that belongs to no character. Allocates nothing.
template <class Write>
void WritePrintable(std::string_view utf8, Write write) {
    std::size_t start = 0;  // of what is written as it is
    for (std::size_t at = 0; at < utf8.size();) {
        const Character character = FirstOf(utf8.substr(at));
        const std::size_t next = at + character.length;
        if (IsControl(character.code)) {
            if (at != start) write(utf8.substr(start, at - start));
            write(std::string_view("\uFFFD"));
            start = next;
        }
        at = next;
    }
    if (start != utf8.size()) write(utf8.substr(start));
}

std::string Printable(std::string_view utf8);

}  // namespace host

#endif
