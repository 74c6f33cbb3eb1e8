// The module with the mapping functions, loaded on first use.

#ifndef PYTHON_CALLS_H
#define PYTHON_CALLS_H

#include "Module.h"

namespace python {

// Throws std::runtime_error if it cannot be loaded.
const calls::Module& TheModule();

}  // namespace python

#endif
