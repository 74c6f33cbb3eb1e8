// What a message says that it found.

#ifndef EXCHANGE_QUOTED_H
#define EXCHANGE_QUOTED_H

#include <string>
#include <string_view>

namespace exchange {

// The text between apostrophes, cut where it is long; "?" stands for what is not printable ASCII.
inline std::string Quoted(std::string_view text) {
    constexpr std::size_t kMost = 60;
    std::string quoted(1, '\'');
    for (const char c : text.substr(0, kMost)) quoted += c >= ' ' && c <= '~' ? c : '?';
    if (text.size() > kMost) quoted += "...";
    quoted += '\'';
    return quoted;
}

}  // namespace exchange

#endif
