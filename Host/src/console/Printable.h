// UTF-8 texts to be shown: their characters, and how to make them safe for a terminal, without
// characters that it would act on instead of showing (ISO/IEC 6429 and Unicode controls), which
// file names and texts of the data may contain.

#ifndef HOST_PRINTABLE_H
#define HOST_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// The first character of a UTF-8 text that is not empty.
struct Character {
    static constexpr char32_t kNone = 0xFFFFFFFF;

    char32_t code;       // kNone for an invalid byte
    std::size_t length;  // in bytes
};
Character FirstOf(std::string_view utf8);

// Whether a byte of a UTF-8 text is the first of a character.
inline bool BeginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

// The number of characters of a UTF-8 text; the text shortened to that many, with "…" instead of
// the rest.
std::size_t Characters(std::string_view utf8);
std::string Shortened(std::string_view utf8, std::size_t most);

// Whether a terminal, or a program that reads text, acts on a character: C0 and C1 controls, DEL,
// marks that change the text direction or end a line, invisible characters, and kNone.
bool IsControl(char32_t code);

// Calls write(piece) with successive pieces of a UTF-8 text, with U+FFFD instead of each control
// character and each invalid byte. Allocates nothing.
template <class Write>
void WritePrintable(std::string_view utf8, Write write) {
    std::size_t start = 0;  // of the piece that is written unchanged
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

// The columns that a printable text takes on a terminal: two for a wide character, none for a mark
// that combines with the one before.
std::size_t DisplayWidth(std::string_view utf8);

}  // namespace host

#endif
