// The frame of every exported function: it opens the trace scope, sets the default result and keeps
// exceptions from reaching the engine.

#ifndef ORX_FUNCTION_H
#define ORX_FUNCTION_H

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "KORMemory.h"
#include "ORXExUtilities.h"
#include "ORXExportTable.h"
#include "Trace.h"

namespace orx {

// The result of functions that find no text.
inline const SdaiString kEmptyValue("EMPTY VALUE");

// The name of a function, as a template argument.
template <std::size_t N>
struct FunctionName {
    consteval FunctionName(const char (&name)[N]) { std::copy_n(name, N, text); }
    // The label in the function's row of the export table; a name without a row does not compile.
    consteval const char* Label() const {
        return FindExport(std::string_view(text, N - 1))->label.data();
    }

    char text[N];
};

// Runs the body of a function that other functions call: body(trace, result), where result starts
// as the default. Exceptions from the body (std::bad_alloc) propagate to the exported function.
template <FunctionName Name, class Result, class Body>
SdaiPrimitiveH Nested(const Result& byDefault, Body&& body) {
    Trace trace(Name.Label());
    Result result = byDefault;
    std::forward<Body>(body)(trace, result);
    return SdaiPrimitiveH(std::move(result));
}

// Returns call(). If it throws, notes that memory is exhausted and returns the default.
template <class Result, class Call>
SdaiPrimitiveH OrDefault(const Result& byDefault, Call&& call) noexcept {
    try {
        return std::forward<Call>(call)();
    } catch (...) {
        KORMemory::NoteExhausted();
        return SdaiPrimitiveH(byDefault);
    }
}

// Runs the body of an exported function.
template <FunctionName Name, class Result, class Body>
SdaiPrimitiveH Function(const Result& byDefault, Body&& body) noexcept {
    return OrDefault(byDefault, [&] { return Nested<Name>(byDefault, body); });
}

// The same for a function that returns nothing: body(trace).
template <FunctionName Name, class Body>
void Procedure(Body&& body) noexcept {
    Trace trace(Name.Label());
    try {
        std::forward<Body>(body)(trace);
    } catch (...) {
        KORMemory::NoteExhausted();
    }
}

}  // namespace orx

#endif
