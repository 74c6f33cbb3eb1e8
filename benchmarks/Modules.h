// The module as an engine loads it, and the same sources built for a platform without a trace
// service.

#ifndef BENCHMARKS_MODULES_H
#define BENCHMARKS_MODULES_H

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace bench {

class Module {
  public:
    explicit Module(const char* path) : library_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) throw std::runtime_error(dlerror());
    }

    void* Find(std::string_view function) const {
        void* address = dlsym(library_, std::string(function).c_str());
        if (address == nullptr) throw std::runtime_error(dlerror());
        return address;
    }

    template <class Function>
    Function* Find(std::string_view function) const {
        return reinterpret_cast<Function*>(Find(function));
    }

  private:
    void* library_;  // stays loaded
};

inline const Module& TheModule() {
    static const Module module(ORX_MODULE);
    return module;
}

inline const Module& UntracedModule() {
    static const Module module(ORX_MODULE_UNTRACED);
    return module;
}

}  // namespace bench

#endif
