// Names in database form (with blanks) and in file form (with the byte 0xB1 in their place).

#ifndef ORX_NAMES_H
#define ORX_NAMES_H

#include <array>
#include <climits>
#include <memory>
#include <string_view>

#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

namespace orx {

// The byte 0xB1, in traces.
inline constexpr const char* kFileBlank = "\xB1";

inline const KORUnicodeString kModelExtension(".model");
inline constexpr int kExtensionLength = 6;

// Conversions of names up to a length in bytes, by the platform's routines and with one buffer for
// what they put out. A name of any bytes is converted whole, in one call; of a name that holds
// NULs, which the routines end at, each piece is converted by itself. A wide name is converted as
// its bytes, from which it is read back.
class NameConversion {
  public:
    explicit NameConversion(std::size_t longestName) : input_(longestName), output_(longestName) {}

    // The name in file form, with an ending; and the part that SubString(start, length) names in
    // database form.
    KORUnicodeString ToFileName(const KORUnicodeString& name, const KORUnicodeString& ending = {});
    KORUnicodeString ToDatabaseName(const KORUnicodeString& fileName, int start = 0,
                                    int length = INT_MAX);

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
    KORUnicodeString Convert(std::string_view bytes, const KORUnicodeString* wide,
                             const KORUnicodeString& ending, Routine routine);

    Buffer input_;
    Buffer output_;
};

// The same for one name.
inline KORUnicodeString ToFileName(const KORUnicodeString& name,
                                   const KORUnicodeString& ending = {}) {
    return NameConversion(name.View().size()).ToFileName(name, ending);
}
inline KORUnicodeString ToDatabaseName(const KORUnicodeString& fileName, int start = 0,
                                       int length = INT_MAX) {
    return NameConversion(fileName.View().size()).ToDatabaseName(fileName, start, length);
}

// ORX_GetModelName, for the functions that call it: throws what it cannot get memory for.
SdaiPrimitiveH ModelName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction);

}  // namespace orx

#endif
