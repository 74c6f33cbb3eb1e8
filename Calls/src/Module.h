// The module with the mapping functions, loaded by name as in an engine.

#ifndef CALLS_MODULE_H
#define CALLS_MODULE_H

#include <array>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "ORXExportTable.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"

namespace calls {

// An argument of a function: a value or a model.
struct Argument {
    SdaiPrimitiveH handle;
    SdaiModel* model = nullptr;
};

// If an argument cannot be passed, describes what is expected instead: a value instead of a model
// or the reverse, or a list to fill. Returns null if it can be passed, even if it is a value of a
// kind that the function does not read.
const char* Misfit(orx::Kind kind, const Argument& argument);

class Module {
  public:
    // Loads a library and finds every function of the export table in it. An empty name selects the
    // library built or installed with the platform. Throws std::runtime_error with the reason on
    // failure.
    explicit Module(const std::string& file);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // Calls a function, which must be a row of orx::kExports, with the right number of arguments,
    // all of which can be passed. For a function that returns nothing, returns its list argument.
    // Throws std::bad_alloc if the function ran out of memory and its default is therefore
    // meaningless.
    SdaiPrimitiveH Call(const orx::Export& function, std::span<const Argument> arguments) const;

    // The same by name, which must be in the table, for a function that takes only values.
    SdaiPrimitiveH Call(std::string_view name,
                        std::initializer_list<SdaiPrimitiveH> arguments) const;

  private:
    SdaiPrimitiveH Invoked(const orx::Export& function, std::span<const Argument> arguments) const;

    void* library_;
    std::array<void*, orx::kExports.size()> symbols_;  // in the order of the table
};

}  // namespace calls

#endif
