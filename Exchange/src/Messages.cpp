// Messages about files.

#include <string>

#include "Exchange.h"

namespace exchange {

std::string Message::ToString() const {
    std::string whole = file;
    if (line != 0) whole += ':' + std::to_string(line) + ':' + std::to_string(column);
    return whole + ": " + text;
}

}  // namespace exchange
