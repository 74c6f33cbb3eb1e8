#include "Module.h"

#include <dlfcn.h>

#include <filesystem>
#include <new>
#include <stdexcept>
#include <vector>

#include "KORMemory.h"
#include "SdaiAggrInstance.h"

namespace host {

namespace {

constexpr const char* kLibrary = "libORXExUtilities.so." ORX_SOVERSION;

// The library where the program is built or installed with it; its plain name, which the system
// looks for, when it is not there.
std::string DefaultFile() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    for (const char* directory : {ORX_LIBDIR, "../lib", "."}) {
        const std::filesystem::path file = program.parent_path() / directory / kLibrary;
        if (std::filesystem::exists(file, error)) return file.string();
    }
    return kLibrary;
}

// Calls a symbol as the function type that it is.
template <class Result, class... Arguments>
Result Invoke(void* symbol, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(symbol)(arguments...);
}

using Handle = const SdaiPrimitiveH&;

}  // namespace

Module::Module(const std::string& file)
    : library_(dlopen((file.empty() ? DefaultFile() : file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
    for (const orx::Export& row : orx::kExports) {
        void* symbol = dlsym(library_, std::string(row.name).c_str());
        if (symbol == nullptr) {
            const std::string reason = dlerror();
            dlclose(library_);
            throw std::runtime_error(reason);
        }
        symbols_.emplace(row.name, symbol);
    }
}

Module::~Module() { dlclose(library_); }

SdaiPrimitiveH Module::Call(const orx::Export& function, std::span<const Value> arguments) const {
    KORMemory::TakeExhausted();
    SdaiPrimitiveH result = Invoked(function, arguments);
    if (KORMemory::TakeExhausted()) throw std::bad_alloc();
    return result;
}

SdaiPrimitiveH Module::Invoked(const orx::Export& function,
                               std::span<const Value> arguments) const {
    void* symbol = symbols_.at(function.name);
    const auto handle = [&](std::size_t i) -> Handle { return arguments[i].handle; };
    switch (function.ArgumentCount()) {
        case 0: return Invoke<SdaiPrimitiveH>(symbol);
        case 1: return Invoke<SdaiPrimitiveH, Handle>(symbol, handle(0));
        case 2:
            if (function.arguments[1] == orx::Model) {
                return Invoke<SdaiEntityInstance*, SdaiString, SdaiModel*>(
                    symbol, static_cast<const SdaiString&>(handle(0)), arguments[1].model);
            }
            return Invoke<SdaiPrimitiveH, Handle, Handle>(symbol, handle(0), handle(1));
        default:
            if (function.arguments[2] == orx::RealList) {
                auto* list = static_cast<SdaiListClassOfSdaiReal*>(
                    static_cast<SdaiAggrInstance*>(handle(2)));
                Invoke<void, Handle, Handle, SdaiListClassOfSdaiReal*&>(symbol, handle(0),
                                                                        handle(1), list);
            } else {
                Invoke<void, Handle, const SdaiString&, Handle>(symbol, handle(0), handle(1),
                                                                handle(2));
            }
            return handle(2);
    }
}

SdaiPrimitiveH Module::Call(std::string_view name,
                            std::initializer_list<SdaiPrimitiveH> arguments) const {
    std::vector<Value> values;
    for (const SdaiPrimitiveH& argument : arguments) values.push_back({argument});
    return Call(*orx::FindExport(name), values);
}

}  // namespace host
