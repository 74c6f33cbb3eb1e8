// Files that are written as wholes: a file takes its target's place when it is complete and on the
// disk, so that nobody ever sees half of it.

#ifndef EXCHANGE_TARGETFILE_H
#define EXCHANGE_TARGETFILE_H

#include <functional>
#include <string>
#include <string_view>

#include "Exchange.h"

namespace exchange {

// An open file; what goes wrong first is kept.
class OutputFile {
  public:
    // Takes over a descriptor, or -1 and the reason in errno.
    explicit OutputFile(int descriptor);
    ~OutputFile() { Close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Append(std::string_view text);
    void Close();

    int Descriptor() const { return descriptor_; }
    // 0 as long as nothing has gone wrong.
    int Error() const { return error_; }
    // Keeps the reason in errno when it did not succeed.
    void Note(bool succeeded);

  private:
    int descriptor_;
    int error_ = 0;
};

// Writes a file with what `fill` appends to it; false, with a message, when that cannot be done or
// when `fill` gives a reason why not. Then the target is as it was.
//
// A device or a pipe is written as it is. A link stays, and what it leads to is written, also where
// that is not there yet. A file keeps its mode, and its owner where the system allows that; a
// warning tells where it does not. A file with further names (hard links) is refused unless
// `options` ask for writing in place, which keeps names, owner and everything else, but leaves part
// of the text when the machine fails meanwhile.
bool WriteFile(const std::string& path, const WriteOptions& options,
               const std::function<std::string(OutputFile&)>& fill, Messages& messages);

}  // namespace exchange

#endif
