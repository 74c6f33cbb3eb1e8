// The unit of the lengths in a representation.

#ifndef HOST_LENGTHUNIT_H
#define HOST_LENGTHUNIT_H

#include <optional>
#include <string>

#include "SdaiEntityInstance.h"

namespace host {

struct LengthUnit {
    std::string symbol;  // "mm", "in", or the name that the data give it, in UTF-8
    double metres;       // positive and finite
};

// No value if the representation's context does not say it.
std::optional<LengthUnit> UnitOfRepresentation(const SdaiEntityInstance& representation);

}  // namespace host

#endif
