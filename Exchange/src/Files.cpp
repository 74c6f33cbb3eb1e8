// Files, read, and written completely or not at all.

#include "Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

namespace exchange {

namespace {

constexpr mode_t kPermissions = 0777;

constexpr std::size_t kBlock = std::size_t{1} << 16;

std::string ErrorText(int error) { return error != 0 ? std::strerror(error) : ""; }

// Reads what comes next. Returns 0 at the end and on error.
std::size_t ReadSome(File& file, std::span<char> to) {
    for (;;) {
        const ssize_t count = read(file.Descriptor(), to.data(), to.size());
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno == EINTR) continue;
        file.Note(false);
        return 0;
    }
}

// The target of a path after following the links at its end; the last one may be dangling. Returns
// an empty path and sets errno if the links are circular.
std::string Followed(std::filesystem::path path) {
    constexpr int kMostLinks = 40;
    for (int i = 0; i <= kMostLinks; ++i) {
        std::error_code none;
        const std::filesystem::path link = std::filesystem::read_symlink(path, none);
        if (none) return path.string();
        path = path.parent_path() / link;  // an absolute link replaces the directory
    }
    errno = ELOOP;
    return {};
}

// Blocks signals that would terminate the process between two calls.
class WithoutSignals {
  public:
    WithoutSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~WithoutSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    WithoutSignals(const WithoutSignals&) = delete;
    WithoutSignals& operator=(const WithoutSignals&) = delete;

  private:
    sigset_t before_{};
};

// A file in the target's directory. If the system allows it, the file has no name until it replaces
// the target, so that nothing is left over however the program ends.
class Replacement {
  public:
    // `mode` as for open: the system applies the process's umask.
    Replacement(const std::string& target, mode_t mode)
        : target_(std::filesystem::path(target).filename().string()),
          folder_(open(FolderOf(target).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
          file_(folder_.Error() == 0 ? Create(FolderOf(target), mode) : -1) {}
    ~Replacement() { Remove(); }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    File& Get() { return file_; }

    // Removes the name, if any, so that the file disappears with its descriptor.
    void Remove() {
        if (name_.empty()) return;
        unlinkat(folder_.Descriptor(), name_.c_str(), 0);
        name_.clear();
    }

    // Replaces the target by the file, which must be open.
    void Replace() { file_.Note(TakePlace()); }

  private:
    static constexpr const char* kDescriptors = "/proc/self/fd/";
    static constexpr int kMostNames = 1000;

    static std::string FolderOf(const std::filesystem::path& target) {
        const std::filesystem::path parent = target.parent_path();
        return parent.empty() ? "." : parent.string();
    }

    // Short, whatever the target's name.
    static std::string NameOf(int number) {
        return ".orx-" + std::to_string(getpid()) + '-' + std::to_string(number);
    }

    // Returns a descriptor, or -1 with the reason in errno.
    int Create(const std::string& folder, mode_t mode) {
        // A file without a name gets one through /proc.
        if (access(kDescriptors, X_OK) == 0) {
            const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
            if (file >= 0) return file;
        }
        for (int number = 0; number < kMostNames; ++number) {
            const std::string name = NameOf(number);
            const int file = openat(folder_.Descriptor(), name.c_str(),
                                    O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode);
            if (file >= 0) name_ = name;
            if (file >= 0 || errno != EEXIST) return file;
        }
        return -1;
    }

    // The functions below return whether they succeeded; if not, errno has the reason.

    bool TakePlace() {
        if (!name_.empty()) return Rename();
        if (Link(target_)) return true;  // there was no target
        if (errno != EEXIST) return false;
        // Only a rename can replace a file, and a rename requires a name.
        const WithoutSignals meanwhile;
        for (int number = 0; number < kMostNames; ++number) {
            std::string name = NameOf(number);
            if (Link(name)) {
                name_ = std::move(name);
                return Rename();
            }
            if (errno != EEXIST) return false;
        }
        return false;
    }

    bool Link(const std::string& name) const {
        const std::string file = kDescriptors + std::to_string(file_.Descriptor());
        return linkat(AT_FDCWD, file.c_str(), folder_.Descriptor(), name.c_str(),
                      AT_SYMLINK_FOLLOW) == 0;
    }

    bool Rename() {
        const int folder = folder_.Descriptor();
        if (renameat(folder, name_.c_str(), folder, target_.c_str()) != 0) return false;
        name_.clear();
        return true;
    }

    const std::string target_;  // its name in the directory
    std::string name_;          // the file's current name; empty if none
    File folder_;
    File file_;
};

// Copies the owner and mode of the file that is replaced. If the group cannot be kept, it gets only
// the rights of others. Returns a warning, or "".
std::string KeepOwner(File& file, const struct stat& old) {
    constexpr auto kSame = static_cast<uid_t>(-1);
    struct stat own {};
    if (file.Error() == 0) file.Note(fstat(file.Descriptor(), &own) == 0);
    if (file.Error() != 0) return {};
    const bool ownerKept =
        own.st_uid == old.st_uid || fchown(file.Descriptor(), old.st_uid, kSame) == 0;
    const bool groupKept =
        own.st_gid == old.st_gid || fchown(file.Descriptor(), kSame, old.st_gid) == 0;
    mode_t mode = old.st_mode & kPermissions;
    if (!groupKept) mode &= (mode & S_IRWXO) << 3 | ~static_cast<mode_t>(S_IRWXG);
    file.Note(fchmod(file.Descriptor(), mode) == 0);
    if (ownerKept && groupKept) return {};
    return "its owner cannot be kept: it was of user " + std::to_string(old.st_uid) + ", group " +
           std::to_string(old.st_gid) + " and is now of user " +
           std::to_string(ownerKept ? old.st_uid : own.st_uid) + ", group " +
           std::to_string(groupKept ? old.st_gid : own.st_gid);
}

// Writes the text and syncs it to disk. Returns the reason for a failure; empty on success.
std::string Fill(File& file, const std::function<std::string(File&)>& fill) {
    if (file.Error() != 0) return file.Reason();
    const std::string problem = fill(file);
    if (file.Error() == 0) file.Note(fsync(file.Descriptor()) == 0);
    return file.Error() != 0 ? file.Reason() : problem;
}

// Copies a complete file over another.
void CopyInPlace(File& whole, File& target) {
    std::array<char, kBlock> piece;
    whole.Note(lseek(whole.Descriptor(), 0, SEEK_SET) == 0);
    while (whole.Error() == 0 && target.Error() == 0) {
        const std::size_t count = ReadSome(whole, piece);
        if (count == 0) break;
        target.Append({piece.data(), count});
    }
    if (target.Error() == 0) target.Note(fsync(target.Descriptor()) == 0);
}

// Overwrites the existing file with a complete text.
std::string WriteInPlace(const std::string& path, const std::function<std::string(File&)>& fill) {
    std::error_code none;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(none);
    Replacement temporary(folder / "orx", S_IRUSR | S_IWUSR);
    File& whole = temporary.Get();
    temporary.Remove();
    std::string problem = Fill(whole, fill);
    if (!problem.empty()) return problem;
    File target(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    CopyInPlace(whole, target);
    target.Close();
    return target.Error() != 0 ? target.Reason() : whole.Reason();
}

// Returns the reason why the file cannot be written; empty on success.
std::string WriteTo(const std::string& path, const WriteOptions& options,
                    const std::function<std::string(File&)>& fill, std::string& warning) {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return ErrorText(EISDIR);
    if (exists && !S_ISREG(status.st_mode)) {
        File device(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        const std::string problem = device.Error() == 0 ? fill(device) : "";
        device.Close();
        return device.Error() != 0 ? device.Reason() : problem;
    }
    if (exists && access(path.c_str(), W_OK) != 0) return ErrorText(errno);
    if (exists && status.st_nlink > 1 && !options.inPlace) {
        return "it has " + std::to_string(status.st_nlink - 1) +
               " further names (hard links), which would keep the old file (--in-place writes it "
               "under all its names)";
    }
    if (exists && options.inPlace) return WriteInPlace(path, fill);
    const std::string target = Followed(path);
    if (target.empty()) return ErrorText(errno);
    Replacement replacement(target, exists ? status.st_mode & kPermissions : 0666);
    File& file = replacement.Get();
    if (exists) warning = KeepOwner(file, status);
    std::string problem = Fill(file, fill);
    if (!problem.empty()) return problem;
    replacement.Replace();
    return file.Reason();
}

}  // namespace

File::File(int descriptor) : descriptor_(descriptor) { Note(descriptor >= 0); }

File::File(File&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), error_(other.error_) {}

File File::ToRead(const std::string& path) {
    File file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (file.Error() == 0 && fstat(file.Descriptor(), &status) == 0 && S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        file.Note(false);
    }
    return file;
}

std::size_t File::ReadAt(std::uint64_t offset, char* to, std::size_t size) {
    for (;;) {
        const ssize_t count = pread(descriptor_, to, size, static_cast<off_t>(offset));
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno == EINTR) continue;
        Note(false);
        return 0;
    }
}

std::string File::ReadAll() {
    std::string text;
    std::array<char, kBlock> block;
    for (std::size_t count = 1; count != 0; text.append(block.data(), count)) {
        count = ReadSome(*this, block);
    }
    return text;
}

void File::Append(std::string_view text) {
    while (error_ == 0 && !text.empty()) {
        const ssize_t count = write(descriptor_, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            Note(false);
        }
    }
}

void File::Close() {
    if (descriptor_ >= 0) Note(close(descriptor_) == 0);
    descriptor_ = -1;
}

int File::Again() const { return fcntl(descriptor_, F_DUPFD_CLOEXEC, 0); }

bool File::IsRegular() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
}

std::uint64_t File::Size() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::string File::Reason() const { return ErrorText(error_); }

void File::Note(bool succeeded) {
    if (!succeeded && error_ == 0) error_ = errno;
}

bool ReadText(const std::string& path, std::string& text, std::string& reason) {
    File file = path == "-" ? File(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)) : File::ToRead(path);
    if (file.Error() == 0) text = file.ReadAll();
    reason = file.Reason();
    return reason.empty();
}

bool WriteFile(const std::string& path, const WriteOptions& options,
               const std::function<std::string(File&)>& fill, Messages& messages) {
    std::string warning;
    const std::string reason = WriteTo(path, options, fill, warning);
    if (!reason.empty()) {
        messages.AddError({path, 0, 0, "cannot be written: " + reason});
    } else if (!warning.empty()) {
        messages.AddWarning({path, 0, 0, warning});
    }
    return reason.empty();
}

bool WriteText(std::string_view text, const std::string& path, Messages& messages,
               const WriteOptions& options) {
    const auto fill = [text](File& file) {
        file.Append(text);
        return std::string();
    };
    return WriteFile(path, options, fill, messages);
}

}  // namespace exchange
