// Shared by the fuzz targets.

#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "RandomWorld.h"

// Choices made by the input; all are 0 once it is used up.
class FuzzedChoices final : public Choices {
  public:
    explicit FuzzedChoices(FuzzedDataProvider& input) : input_(input) {}
    std::size_t Below(std::size_t count) override {
        return input_.ConsumeIntegralInRange<std::size_t>(0, count - 1);
    }

  private:
    FuzzedDataProvider& input_;
};

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Aborts if something does not hold that must hold for any input.
inline void Require(bool holds, std::string_view promise, std::string_view detail = "") {
    if (holds) return;
    std::fprintf(stderr, "broken: %.*s\n%.*s\n", static_cast<int>(promise.size()), promise.data(),
                 static_cast<int>(detail.size()), detail.data());
    std::abort();
}

// Calls a function and checks that its result is of a kind that the export table allows.
inline void CallAndCheck(const calls::Module& module, const RandomCall& call,
                         const host::Session& session) {
    const SdaiPrimitiveH result = module.Call(*call.function, call.arguments);
    const orx::Kind allowed = call.function->result;
    if (allowed == orx::Nothing || allowed == orx::Any) return;
    const orx::Kind kind = KindOf(result);
    Require((allowed & kind) != 0, "the result's kind is in the export table",
            call.ToText(session));
    if (kind == orx::Logical) {
        const SdaiLogical truth = result;
        Require(truth == sdaiLTRUE || truth == sdaiLFALSE, "a result is TRUE or FALSE",
                call.ToText(session));
    }
}

inline const calls::Module& TheModule() {
    static const calls::Module module{""};
    return module;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
