// Output of truth values.

#include <ostream>

#include "SdaiLogical.h"

std::ostream& operator<<(std::ostream& stream, SdaiBoolean value) {
    return stream << SdaiLogical(value);
}

std::ostream& operator<<(std::ostream& stream, SdaiLogical value) {
    return stream << (value == sdaiLTRUE ? "TRUE" : value == sdaiLFALSE ? "FALSE" : "UNKNOWN");
}
