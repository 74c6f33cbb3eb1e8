// The destination of trace lines.

#ifndef KOR_TRACEFILE_H
#define KOR_TRACEFILE_H

#include <sys/stat.h>
#include <climits>
#include <mutex>
#include <string_view>
#include <type_traits>

#include "KORExport.h"

namespace kor {

// A file, pipe or terminal; the standard error stream until one is set. It needs no construction
// and no destruction, so that it can be written to for as long as the process runs; whoever has it
// closes it. Threads may share it: each line is written whole.
class KOR_API TraceFile {
  public:
    // Appends lines to the file, which is opened for the first one. Null or "" is the standard
    // error stream.
    void Append(const char* file);

    // The same for a file that is truncated now, unless a standard stream writes to it as well. A
    // pipe is opened later, since opening waits for its reader. Returns false if the file cannot be
    // opened.
    bool StartAnew(const char* file);

    // Writes a line with its line break. A line that cannot be written is lost; later lines may
    // succeed again.
    void Write(std::string_view line);

    // A line that follows opens the file again and is appended.
    void Close();

  private:
    void CloseFile();
    bool Set(const char* file);
    bool Open();
    bool ShareWith(int standard, const struct stat& status);

    std::mutex mutex_;
    int descriptor_ = -1;   // not open yet
    bool regular_ = false;  // a file, not a pipe or device
    bool terminal_ = false;
    bool shared_ = false;       // with a standard stream
    char file_[PATH_MAX] = {};  // "": the standard error stream
};
static_assert(std::is_trivially_destructible_v<TraceFile>);

}  // namespace kor

#endif
