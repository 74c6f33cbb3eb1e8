// A dictionary name (of an entity type or attribute) that is known at compile time. The data access
// interface takes names as texts; if a name is a constant, writing it as
//
//     using namespace sdai_names;
//     instance->GetAttr("REP_1"_name)
//
// saves work on every call: its letters are folded to upper case and its hash is computed at
// compile time, so that an attribute is found by one lookup in a small table. No memory is
// allocated and nothing runs when the program is loaded.

#ifndef SDAINAME_H
#define SDAINAME_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

// Names are compared ignoring the case of the letters A to Z, as in EXPRESS (ISO 10303-11).
constexpr char SdaiFoldCase(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

// Eight characters at once: subtracts 32 from each byte between 'a' and 'z'.
constexpr std::uint64_t SdaiFoldCase(std::uint64_t characters) {
    constexpr std::uint64_t kBytes = 0x0101010101010101U;
    const std::uint64_t low = characters & 0x7F * kBytes;
    const std::uint64_t fromA = low + (0x80 - 'a') * kBytes;
    const std::uint64_t afterZ = low + (0x7F - 'z') * kBytes;
    return characters - ((fromA & ~afterZ & ~characters & 0x80 * kBytes) >> 2);
}

// The case-insensitive hash of a name: takes eight characters at a time; the last eight overlap
// those before them.
constexpr std::uint32_t SdaiNameHash(std::string_view name) {
    const auto word = [name](std::size_t from, std::size_t length) {
        std::uint64_t characters = 0;
        if (std::is_constant_evaluated() || length < 8) {
            for (std::size_t i = length; i-- > 0;) {
                characters = characters << 8 | static_cast<unsigned char>(name[from + i]);
            }
        } else {
            std::memcpy(&characters, name.data() + from, sizeof characters);
        }
        return SdaiFoldCase(characters);
    };
    std::uint64_t hash = name.size();
    const auto mix = [&hash](std::uint64_t characters) {
        hash = (hash ^ characters) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32;
    };
    for (std::size_t at = 0; at + 8 < name.size(); at += 8) mix(word(at, 8));
    if (name.size() >= 8) {
        mix(word(name.size() - 8, 8));
    } else {
        mix(word(0, name.size()));
    }
    return static_cast<std::uint32_t>(hash);
}

struct SdaiName {
    std::string_view text;    // as written; NUL-terminated
    std::string_view folded;  // in upper case
    std::uint32_t hash;
};

namespace sdai_names {

template <std::size_t N>
struct Literal {
    consteval Literal(const char (&literal)[N]) { std::copy_n(literal, N, text); }
    consteval Literal Folded() const {
        Literal folded = *this;
        for (char& c : folded.text) c = SdaiFoldCase(c);
        return folded;
    }
    constexpr std::string_view View() const { return {text, N - 1}; }

    char text[N];
};

template <Literal L>
struct NameOf {
    static constexpr Literal kText = L;
    static constexpr Literal kFolded = L.Folded();
    static constexpr SdaiName kName{kText.View(), kFolded.View(), SdaiNameHash(kText.View())};
};

template <Literal L>
consteval const SdaiName& operator""_name() {
    return NameOf<L>::kName;
}

}  // namespace sdai_names

#endif
