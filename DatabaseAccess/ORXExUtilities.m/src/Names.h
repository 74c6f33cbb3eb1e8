// Names in database form (with blanks) and in file form (with the byte 0xB1 in their place).

#ifndef ORX_NAMES_H
#define ORX_NAMES_H

#include <array>
#include <memory>
#include <string_view>

#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

namespace orx {

// The byte 0xB1, in traces.
inline constexpr const char* kFileBlank = "\xB1";

inline constexpr std::string_view kModelExtension = ".model";

// Conversions of names up to a length, by the platform's routines and with one buffer for what they
// put out. A name of any bytes is converted whole, in one call; of a name that holds NULs, which
// the routines end at, each piece is converted by itself.
class NameConversion {
  public:
    explicit NameConversion(std::size_t longestName) : input_(longestName), output_(longestName) {}

    // The name in file form, with an ending; and in database form.
    SdaiString ToFileName(std::string_view name, std::string_view ending = {});
    SdaiString ToDatabaseName(std::string_view fileName);

  private:
    // Room for a name of 80 characters, and for a longer one where there is need, with its NUL.
    class Buffer {
      public:
        explicit Buffer(std::size_t longestName) {
            if (longestName >= small_.size()) large_.reset(new char[longestName + 1]);
        }
        char* Characters() { return large_ != nullptr ? large_.get() : small_.data(); }

      private:
        std::array<char, 81> small_;
        std::unique_ptr<char[]> large_;
    };

    template <class Routine>
    SdaiString Convert(std::string_view name, std::string_view ending, Routine routine);

    Buffer input_;
    Buffer output_;
};

// The same for one name.
inline SdaiString ToFileName(std::string_view name, std::string_view ending = {}) {
    return NameConversion(name.size()).ToFileName(name, ending);
}
inline SdaiString ToDatabaseName(std::string_view fileName) {
    return NameConversion(fileName.size()).ToDatabaseName(fileName);
}

// ORX_GetModelName, for the functions that call it: throws what it cannot get memory for.
SdaiPrimitiveH ModelName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction);

}  // namespace orx

#endif
