// Names in database form (with blanks) and in file form (with the byte 0xB1 instead of blanks).

#ifndef ORX_FILENAMES_H
#define ORX_FILENAMES_H

#include <array>
#include <climits>
#include <memory>
#include <string_view>

#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

namespace orx {

// The byte 0xB1, in traces.
inline constexpr const char* kFileBlank = "\xB1";

inline constexpr std::string_view kModelExtension = ".model";
inline constexpr int kExtensionLength = 6;

// Converts names of up to `longestName` bytes with the platform's routines, reusing one output
// buffer. A name is converted in a single call; since the routines stop at NUL, a name that
// contains NULs is converted piece by piece. A wide name is converted in its byte form, and the
// result is decoded again.
class NameConversion {
  public:
    explicit NameConversion(std::size_t longestName) : input_(longestName), output_(longestName) {}

    // ToFileName returns the name in file form, with `ending` appended; ToDatabaseName returns
    // SubString(start, length) of the file name in database form.
    KORUnicodeString ToFileName(const KORUnicodeString& name, std::string_view ending = {});
    KORUnicodeString ToDatabaseName(const KORUnicodeString& fileName, int start, int length);

  private:
    // Room for a name with its NUL: 80 characters in place, longer names on the heap.
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
                             std::string_view ending, Routine routine);

    Buffer input_;
    Buffer output_;
};

// Conversions of a single name.
inline KORUnicodeString ToFileName(const KORUnicodeString& name, std::string_view ending = {}) {
    return NameConversion(name.View().size()).ToFileName(name, ending);
}
inline KORUnicodeString ToDatabaseName(const KORUnicodeString& fileName, int start = 0,
                                       int length = INT_MAX) {
    return NameConversion(fileName.View().size()).ToDatabaseName(fileName, start, length);
}

// ORX_GetModelName for use by other functions: throws std::bad_alloc when memory runs out.
SdaiPrimitiveH ModelName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction);

}  // namespace orx

#endif
