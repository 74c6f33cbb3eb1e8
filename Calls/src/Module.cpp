// Loading the module and calling its functions.

#include "Module.h"

#include <dlfcn.h>

#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "KORMemory.h"
#include "model/Aggregate.h"

namespace calls {

namespace {

constexpr const char* kLibrary = "libORXExUtilities.so." ORX_SOVERSION;

// The library in the platform's directory, where it is built and installed; otherwise its plain
// name, which the system searches for.
std::string DefaultFile() {
    Dl_info platform;
    if (dladdr(reinterpret_cast<const void*>(&KORMemory::TakeExhausted), &platform) != 0) {
        const std::filesystem::path file =
            std::filesystem::path(platform.dli_fname).parent_path() / kLibrary;
        std::error_code error;
        if (std::filesystem::exists(file, error)) return file.string();
    }
    return kLibrary;
}

// Calls a symbol with its function type.
template <class Result, class... Arguments>
Result Invoke(void* symbol, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(symbol)(arguments...);
}

using Handle = const SdaiPrimitiveH&;

}  // namespace

const char* Misfit(orx::Kind kind, const Argument& argument) {
    if (kind == orx::Model) {
        return argument.model == nullptr ? "a model expected, found a value" : nullptr;
    }
    if (argument.model != nullptr) return "a value expected, found a model";
    if (kind != orx::RealList) return nullptr;
    const SdaiAggrInstance* list = argument.handle;
    const bool isRealList = list != nullptr && kor::AggregateAccess::IsRealList(*list);
    return isRealList ? nullptr : "a list of reals expected, such as ()";
}

Module::Module(const std::string& file)
    : library_(dlopen((file.empty() ? DefaultFile() : file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
    for (std::size_t i = 0; i < symbols_.size(); ++i) {
        symbols_[i] = dlsym(library_, std::string(orx::kExports[i].name).c_str());
        if (symbols_[i] == nullptr) {
            const std::string reason = dlerror();
            dlclose(library_);
            throw std::runtime_error(reason);
        }
    }
}

Module::~Module() { dlclose(library_); }

SdaiPrimitiveH Module::Call(const orx::Export& function,
                            std::span<const Argument> arguments) const {
    KORMemory::TakeExhausted();
    SdaiPrimitiveH result = Invoked(function, arguments);
    if (KORMemory::TakeExhausted()) throw std::bad_alloc();
    return result;
}

SdaiPrimitiveH Module::Invoked(const orx::Export& function,
                               std::span<const Argument> arguments) const {
    void* symbol = symbols_[static_cast<std::size_t>(&function - orx::kExports.data())];
    const auto handle = [&](std::size_t i) -> Handle { return arguments[i].handle; };
    switch (function.ArgumentCount()) {
        case 0: return Invoke<SdaiPrimitiveH>(symbol);
        case 1: return Invoke<SdaiPrimitiveH, Handle>(symbol, handle(0));
        case 2:
            if (function.arguments[1] == orx::Model) {
                return Invoke<SdaiEntityInstance*, SdaiString, SdaiModel*>(
                    symbol, TextOf(handle(0)), arguments[1].model);
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
    std::vector<Argument> values;
    for (const SdaiPrimitiveH& argument : arguments) values.push_back({argument});
    return Call(*orx::FindExport(name), values);
}

}  // namespace calls
