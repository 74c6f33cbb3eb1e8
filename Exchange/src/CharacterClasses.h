// The classes of characters in exchange files (ISO 10303-21).

#ifndef EXCHANGE_CHARACTERCLASSES_H
#define EXCHANGE_CHARACTERCLASSES_H

#include <array>

namespace exchange {

enum CharacterClass : unsigned char {
    kSpace = 1,  // between tokens, except line breaks
    kDigit = 2,
    kLetter = 4,  // A to Z, a to z, _
    kLower = 8,
    kHex = 16,
    kPlain = 32,    // unchanged in a string
    kNoToken = 64,  // cannot begin a token, or is the end of the window
    kNumber = 128,  // begins a number
};

inline constexpr auto kClasses = [] {
    std::array<unsigned char, 256> classes{};
    for (const char c : {' ', '\t', '\f', '\v'}) {
        classes[static_cast<unsigned char>(c)] |= kSpace;
    }
    for (unsigned c = '0'; c <= '9'; ++c) classes[c] |= kDigit | kHex | kNumber;
    for (const char c : {'+', '-'}) classes[static_cast<unsigned char>(c)] |= kNumber;
    for (unsigned c = 'A'; c <= 'F'; ++c) classes[c] |= kHex;
    for (unsigned c = 'a'; c <= 'f'; ++c) classes[c] |= kHex;
    for (unsigned c = 'A'; c <= 'Z'; ++c) classes[c] |= kLetter;
    for (unsigned c = 'a'; c <= 'z'; ++c) classes[c] |= kLetter | kLower;
    classes['_'] |= kLetter;
    for (const char c : {' ', '\t', '\r', '\f', '\v', '\n', '/', '\\', '\0'}) {
        classes[static_cast<unsigned char>(c)] |= kNoToken;
    }
    for (unsigned c = ' '; c <= '~'; ++c) classes[c] |= c != '\'' && c != '\\' ? kPlain : 0;
    return classes;
}();

inline bool Is(char c, unsigned classes) {
    return (kClasses[static_cast<unsigned char>(c)] & classes) != 0;
}

}  // namespace exchange

#endif
