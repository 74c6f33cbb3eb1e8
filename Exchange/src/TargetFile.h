// Files that are written completely or not at all: a file replaces its target once it is complete
// and on disk, so that no reader ever sees half of it.

#ifndef EXCHANGE_TARGETFILE_H
#define EXCHANGE_TARGETFILE_H

#include <functional>
#include <string>
#include <string_view>

#include "Exchange.h"

namespace exchange {

// An open file; remembers the first error.
class OutputFile {
  public:
    // Takes ownership of a descriptor, or takes -1 and the reason from errno.
    explicit OutputFile(int descriptor);
    ~OutputFile() { Close(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Append(std::string_view text);
    void Close();

    int Descriptor() const { return descriptor_; }
    // 0 if there was no error.
    int Error() const { return error_; }
    // Remembers errno if `succeeded` is false.
    void Note(bool succeeded);

  private:
    int descriptor_;
    int error_ = 0;
};

// Writes a file with the text that `fill` appends. Returns false, with a message, if this fails or
// if `fill` returns a reason to fail; the target is then unchanged.
//
// A device or pipe is written directly. If the target is a symbolic link, the file that it leads to
// is written, even if it does not exist yet. A file keeps its mode, and its owner if the system
// allows that; otherwise there is a warning. A file with further hard links is refused unless
// `options` request writing in place, which keeps links, owner and everything else, but may leave a
// partial text if the machine fails.
bool WriteFile(const std::string& path, const WriteOptions& options,
               const std::function<std::string(OutputFile&)>& fill, Messages& messages);

}  // namespace exchange

#endif
