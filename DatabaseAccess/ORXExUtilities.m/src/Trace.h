// Tracing for the functions: lines in a scope of the platform's trace service.

#ifndef ORX_TRACE_H
#define ORX_TRACE_H

#include <ostream>
#include <string_view>

#include "KORPSNTrace.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

namespace orx {

// The trace of one call, from entering the function to leaving it.
class Trace {
  public:
    static constexpr int kLevel = 12;

    explicit Trace(const char* label) : scope_(label, kLevel, 0) {}

    bool IsActive() const { return KORPSNTrace::LevelIsActive(scope_.GetLevel()) != 0; }

    // Writes one line: the indentation, the label, a blank and the pieces. Formats nothing unless
    // the level is active. If a line cannot be written, only that line is lost.
    template <class... Pieces>
    void Line(const Pieces&... pieces) noexcept {
        if (IsActive()) Write(pieces...);
    }

  private:
    template <class... Pieces>
    void Write(const Pieces&... pieces) noexcept {
        try {
            std::ostream& line = scope_.GetLigne().GetStream();
            line << KORPSNTrace::Indent(KORPSNTrace::GetIndent() + 3) << scope_.GetMethod() << " ";
            (line << ... << pieces) << std::endl;
            scope_.Out();
        } catch (...) {
        }
    }

    KORPSNTrace scope_;
};

// A piece of a line: the name of a value's entity type, empty if the value is not an instance. It
// is looked up only when the line is written.
struct TypeNameOf {
    const SdaiPrimitiveH& value;

    friend std::ostream& operator<<(std::ostream& line, const TypeNameOf& piece) {
        const SdaiNamedType* type = piece.value.GetInstanceType();
        return type != nullptr ? line << type->Name() : line;
    }
};

}  // namespace orx

#endif
