// Text found in a file, quoted for messages.

#ifndef EXCHANGE_QUOTED_H
#define EXCHANGE_QUOTED_H

#include <string>
#include <string_view>

namespace exchange {

// The text in apostrophes, shortened if long; "?" replaces characters that are not printable ASCII.
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
