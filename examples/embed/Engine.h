// The smallest engine: the module loaded by name, its functions found in the export table.

#ifndef ENGINE_H
#define ENGINE_H

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <unordered_map>

#include "ORXExportTable.h"
#include "ORXSuggestion.h"
#include "SdaiPrimitiveH.h"

class Engine {
  public:
    // Loads the module and binds every function of the export table. Throws std::runtime_error with
    // the reason if the module or a function is missing.
    explicit Engine(const char* module = "libORXExUtilities.so.0.2")
        : module_(dlopen(module, RTLD_NOW | RTLD_LOCAL)) {
        if (module_ == nullptr) throw std::runtime_error(dlerror());
        for (const orx::Export& row : orx::kExports) {
            void* symbol = dlsym(module_, std::string(row.name).c_str());
            if (symbol == nullptr) throw std::runtime_error(dlerror());
            symbols_.emplace(row.name, symbol);
        }
    }
    // The module stays loaded: handles that it returned may outlive the engine.
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Calls a function that takes handles and returns one, as all but three of those with arguments
    // do (ORXExportTable.h). Throws for an unknown name, a wrong number of arguments, or one of the
    // three.
    template <class... Handles>
    SdaiPrimitiveH Call(std::string_view name, const Handles&... arguments) const {
        Check(name, sizeof...(arguments));
        return As<SdaiPrimitiveH(AsHandle<Handles>...)>(name)(arguments...);
    }

    // A function with its actual type.
    template <class Signature>
    Signature* As(std::string_view name) const {
        return reinterpret_cast<Signature*>(symbols_.at(name));
    }

  private:
    // Throws with the reason: a misspelt name, a wrong number of arguments, or one of the three
    // functions.
    static void Check(std::string_view name, std::size_t count) {
        const orx::Export* row = orx::FindExport(name);
        if (row == nullptr) {
            const std::string nearest(orx::NearestExport(name));
            throw std::runtime_error(
                "no function is named " + std::string(name) +
                (nearest.empty() ? std::string() : "; did you mean " + nearest + "?"));
        }
        if (row->ArgumentCount() != count) {
            throw std::runtime_error(std::string(name) + " takes " +
                                     std::to_string(row->ArgumentCount()) + " arguments, found " +
                                     std::to_string(count));
        }
        if (row->result == orx::Nothing || row->arguments[1] == orx::Model) {
            throw std::runtime_error(std::string(name) + " takes more than handles: use As");
        }
    }

    template <class>
    using AsHandle = const SdaiPrimitiveH&;

    void* module_;
    std::unordered_map<std::string_view, void*> symbols_;
};

#endif
