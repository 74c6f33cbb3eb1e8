// The destination of trace lines.

#include "services/TraceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "services/Utf8.h"

namespace kor {

namespace {

// A line as it goes to a terminal, which shows UTF-8 and acts on control characters: these are
// written as exchange files write them, \X\1B for an escape.
std::string ForTerminal(std::string_view line) {
    std::string shown;
    if (line.ends_with('\n')) line.remove_suffix(1);
    for (const char c : line) {
        const char32_t character = CodePoint(c);
        if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
            shown += "\\X\\";
            AppendHex(shown, character, 2);
        } else {
            AppendUtf8(shown, character);
        }
    }
    return shown += '\n';
}

void WriteToStandardError(std::string_view line) {
    const std::string shown = isatty(STDERR_FILENO) ? ForTerminal(line) : std::string(line);
    std::cerr.write(shown.data(), static_cast<std::streamsize>(shown.size()));
    std::cerr.flush();
    std::cerr.clear();
}

// Prevents SIGPIPE from a pipe without readers from ending the process.
class PipeSignalHeldBack {
  public:
    PipeSignalHeldBack() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        pending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~PipeSignalHeldBack() {
        const timespec now{};
        if (!pending_) sigtimedwait(&pipe_, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    PipeSignalHeldBack(const PipeSignalHeldBack&) = delete;
    PipeSignalHeldBack& operator=(const PipeSignalHeldBack&) = delete;

  private:
    sigset_t pipe_;
    sigset_t before_;
    bool pending_;
};

bool IsPipe(const char* file) {
    struct stat status {};
    return stat(file, &status) == 0 && S_ISFIFO(status.st_mode);
}

}  // namespace

void TraceFile::Append(const char* file) {
    const std::lock_guard lock(mutex_);
    Set(file);
}

bool TraceFile::StartAnew(const char* file) {
    const std::lock_guard lock(mutex_);
    if (!Set(file)) return false;
    if (file_[0] == '\0') return true;
    if (IsPipe(file_)) return access(file_, W_OK) == 0;
    if (!Open()) {
        file_[0] = '\0';
        return false;
    }
    return !regular_ || shared_ || ftruncate(descriptor_, 0) == 0;
}

void TraceFile::Write(std::string_view line) {
    const std::lock_guard lock(mutex_);
    if (file_[0] == '\0') {
        WriteToStandardError(line);
    } else if (descriptor_ >= 0 || Open()) {
        std::string shown;
        if (terminal_) line = shown = ForTerminal(line);
        std::optional<PipeSignalHeldBack> heldBack;
        if (!regular_) heldBack.emplace();
        while (!line.empty()) {
            const ssize_t written = write(descriptor_, line.data(), line.size());
            if (written < 0 && errno != EINTR) break;
            if (written > 0) line.remove_prefix(static_cast<std::size_t>(written));
        }
    }
}

void TraceFile::Close() {
    const std::lock_guard lock(mutex_);
    CloseFile();
}

void TraceFile::CloseFile() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
}

// Makes the path absolute now, since the working directory may differ when it is opened.
bool TraceFile::Set(const char* file) {
    CloseFile();
    file_[0] = '\0';
    if (file == nullptr || *file == '\0') return true;
    std::size_t size = 0;
    if (*file != '/' && getcwd(file_, sizeof file_ - 1) != nullptr) {
        size = std::strlen(file_);
        file_[size++] = '/';
    }
    const std::size_t length = std::strlen(file);
    if (size + length >= sizeof file_) {
        file_[0] = '\0';
        return false;
    }
    std::memcpy(file_ + size, file, length + 1);
    return true;
}

bool TraceFile::Open() {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY;
    do {
        descriptor_ = open(file_, kFlags, 0666);
    } while (descriptor_ < 0 && errno == EINTR);
    struct stat status {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) return false;
    regular_ = S_ISREG(status.st_mode);
    terminal_ = isatty(descriptor_) == 1;
    // If a standard stream writes to this file, it has its own position in it and would overwrite
    // the lines, so they go through that stream's descriptor.
    shared_ = ShareWith(STDOUT_FILENO, status) || ShareWith(STDERR_FILENO, status);
    return true;
}

bool TraceFile::ShareWith(int standard, const struct stat& status) {
    struct stat other {};
    if (fstat(standard, &other) != 0 || other.st_dev != status.st_dev ||
        other.st_ino != status.st_ino || (fcntl(standard, F_GETFL) & O_ACCMODE) == O_RDONLY) {
        return false;
    }
    const int shared = fcntl(standard, F_DUPFD_CLOEXEC, 0);
    if (shared < 0) return false;
    close(descriptor_);
    descriptor_ = shared;
    return true;
}

}  // namespace kor
