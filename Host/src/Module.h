// The module with the mapping functions, loaded by name as an engine does.

#ifndef HOST_MODULE_H
#define HOST_MODULE_H

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "ORXExportTable.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"

namespace host {

// An argument: a value, or a model where a function takes one.
struct Value {
    SdaiPrimitiveH handle;
    SdaiModel* model = nullptr;
};

class Module {
  public:
    // Loads a library and finds every function of the export table in it. Empty: the library
    // beside the program. Throws std::runtime_error with the reason when that fails.
    explicit Module(const std::string& file);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // Calls a function of the table with as many arguments as it takes, each a model where it takes
    // a model and a value elsewhere, and a list of reals (SdaiListClassOfSdaiReal) where it takes
    // one. A function that returns nothing gives its list argument. Throws std::bad_alloc when the
    // function ran out of memory, whose default is no answer then.
    SdaiPrimitiveH Call(const orx::Export& function, std::span<const Value> arguments) const;

    // The same for a function that takes values alone, by its name, which must be in the table.
    SdaiPrimitiveH Call(std::string_view name,
                        std::initializer_list<SdaiPrimitiveH> arguments) const;

  private:
    SdaiPrimitiveH Invoked(const orx::Export& function, std::span<const Value> arguments) const;

    void* library_;
    std::unordered_map<std::string_view, void*> symbols_;
};

}  // namespace host

#endif
