// A program that is linked with the module.

#include <iostream>

#include "ORXExUtilities.h"

int main() {
    const SdaiPrimitiveH cut = ORXTrunc(SdaiPrimitiveH(SdaiString("trolley")), SdaiPrimitiveH(4));
    const bool right = static_cast<bool>(static_cast<const SdaiString&>(cut) == "trol");
    if (!right) std::cerr << "wrong result\n";
    return right ? 0 : 1;
}
