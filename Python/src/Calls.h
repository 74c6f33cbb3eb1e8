// The module with the mapping functions, loaded when it is first needed.

#ifndef PYTHON_CALLS_H
#define PYTHON_CALLS_H

#include "Module.h"

namespace python {

// Throws std::runtime_error when it cannot be loaded.
const calls::Module& TheModule();

}  // namespace python

#endif
