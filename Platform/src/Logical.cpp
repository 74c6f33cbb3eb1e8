#include <ostream>

#include "SdaiLogical.h"

std::ostream& operator<<(std::ostream& stream, SdaiLogical value) {
    return stream << (value == sdaiLTRUE ? "TRUE" : value == sdaiLFALSE ? "FALSE" : "UNKNOWN");
}
