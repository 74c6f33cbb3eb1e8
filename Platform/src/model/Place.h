// A place in a text: of a schema, an exchange file, a script.

#ifndef KOR_PLACE_H
#define KOR_PLACE_H

#include <cstdint>

namespace kor {

// Counted from 1; 0 where the place is not known. The column counts bytes.
struct Place {
    std::uint64_t line = 0;
    std::uint64_t column = 0;
};

}  // namespace kor

#endif
