// Decimal digits and other characters of a text, eight at a time.

#ifndef EXCHANGE_DIGITS_H
#define EXCHANGE_DIGITS_H

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace exchange {

// The next eight characters, the first of them in the lowest byte.
inline std::uint64_t NextEight(const char* at) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t characters;
    std::memcpy(&characters, at, sizeof characters);
    return characters;
}

// A byte in each of the eight.
constexpr std::uint64_t InEach(char c) {
    return 0x0101'0101'0101'0101U * static_cast<unsigned char>(c);
}

// The position of a character among the eight; 8 if it is not there.
inline int PositionIn(std::uint64_t characters, char c) {
    const std::uint64_t differences = characters ^ InEach(c);
    const std::uint64_t equal = (differences - InEach(1)) & ~differences & InEach('\x80');
    return std::countr_zero(equal) / 8;
}

// 10^0 to 10^8.
inline constexpr std::array<std::uint64_t, 9> kFewZeros{
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000};

// Takes all digits that begin at `at`, as the lowest decimal places of a number; with more than
// nineteen places the number is meaningless. Returns the position after them. Reads up to seven
// characters more.
inline const char* TakeDigits(const char* at, std::uint64_t& number) {
    for (;;) {
        // The bytes of digits are below ten, and the lowest other byte is marked.
        std::uint64_t digits = NextEight(at) ^ InEach('0');
        const std::uint64_t others = (digits | (digits + InEach(0x76))) & InEach('\x80');
        const int count = std::countr_zero(others) / 8;
        if (count == 0) return at;
        digits <<= 64 - 8 * count;
        digits = (digits * 10 + (digits >> 8)) & 0x00FF'00FF'00FF'00FFU;
        digits = (digits * 100 + (digits >> 16)) & 0x0000'FFFF'0000'FFFFU;
        digits = (digits * 10'000 + (digits >> 32)) & 0xFFFF'FFFFU;
        number = number * kFewZeros[static_cast<std::size_t>(count)] + digits;
        at += count;
        if (count < 8) return at;
    }
}

// The same one by one: where there are few digits, and as many as the last time, their end is
// predicted rather than computed.
inline const char* TakeFewDigits(const char* at, std::uint64_t& number) {
    for (;; ++at) {
        const unsigned digit = static_cast<unsigned char>(*at) - unsigned{'0'};
        if (digit > 9) return at;
        number = 10 * number + digit;
    }
}

// The same for a name, which mostly has four digits or more: the first four are taken at once.
inline const char* TakeName(const char* at, std::uint64_t& number) {
    std::uint32_t digits;
    std::memcpy(&digits, at, sizeof digits);
    digits ^= 0x3030'3030U;
    if (((digits | (digits + 0x7676'7676U)) & 0x8080'8080U) == 0) {
        digits = (digits * 10 + (digits >> 8)) & 0x00FF'00FFU;
        digits = (digits * 100 + (digits >> 16)) & 0xFFFFU;
        number = number * 10'000 + digits;
        at += 4;
    }
    return TakeFewDigits(at, number);
}

}  // namespace exchange

#endif
