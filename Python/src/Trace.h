// `orxexutilities.trace`: sends the trace of the functions to a file or a callable.

#ifndef PYTHON_TRACE_H
#define PYTHON_TRACE_H

#include <pybind11/pybind11.h>

namespace python {

void AddTrace(pybind11::module_& module);

}  // namespace python

#endif
