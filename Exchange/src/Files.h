// The files of the system: opened, read and written; a file that is written replaces its target
// once it is complete and on disk, so that no reader ever sees half of it.

#ifndef EXCHANGE_FILES_H
#define EXCHANGE_FILES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Exchange.h"

namespace exchange {

// An open file: owns the descriptor, and remembers the first error.
class File {
  public:
    // Takes ownership of a descriptor, or takes -1 and the reason from errno.
    explicit File(int descriptor);
    // Opens a file for reading. A directory is an error.
    static File ToRead(const std::string& path);
    ~File() { Close(); }
    File(File&& other) noexcept;
    File& operator=(File&&) = delete;

    // Reads up to `size` bytes from an offset, which pipes do not have. Returns 0 at the end and on
    // error.
    std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t size);
    // Reads up to its end.
    std::string ReadAll();
    void Append(std::string_view text);
    void Close();

    // Another descriptor of the same file, as for the constructor.
    int Again() const;
    // Whether it can be read at an offset, as devices and pipes cannot.
    bool IsRegular() const;
    // The number of bytes; 0 if it is not known.
    std::uint64_t Size() const;

    int Descriptor() const { return descriptor_; }
    // 0 if there was no error.
    int Error() const { return error_; }
    // The error as a text; "" if there was none.
    std::string Reason() const;
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
               const std::function<std::string(File&)>& fill, Messages& messages);

}  // namespace exchange

#endif
