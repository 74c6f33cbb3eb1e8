// The module with the mapping functions, loaded by name as an engine does.

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

// An argument as a function takes it: a value, or a model.
struct Argument {
    SdaiPrimitiveH handle;
    SdaiModel* model = nullptr;
};

// What is expected where a function takes an argument of that kind, when the argument cannot be
// handed over: it is a model where a value is due, or the reverse, or no list where one is to be
// filled. Null when it can: a value of another kind than the function reads is no obstacle.
const char* Misfit(orx::Kind kind, const Argument& argument);

class Module {
  public:
    // Loads a library and finds every function of the export table in it. Empty: the library that
    // is built or installed with the platform's. Throws std::runtime_error with the reason when
    // that fails.
    explicit Module(const std::string& file);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // Calls a function, which must be a row of orx::kExports, with as many arguments as it takes,
    // none of them a misfit. A function that returns nothing gives its list argument. Throws
    // std::bad_alloc when the function ran out of memory, whose default is no answer then.
    SdaiPrimitiveH Call(const orx::Export& function, std::span<const Argument> arguments) const;

    // The same for a function that takes values alone, by its name, which must be in the table.
    SdaiPrimitiveH Call(std::string_view name,
                        std::initializer_list<SdaiPrimitiveH> arguments) const;

  private:
    SdaiPrimitiveH Invoked(const orx::Export& function, std::span<const Argument> arguments) const;

    void* library_;
    std::array<void*, orx::kExports.size()> symbols_;  // in the order of the table
};

}  // namespace calls

#endif
