// Files that are written completely or not at all.

#include "TargetFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace exchange {

namespace {

constexpr mode_t kPermissions = 0777;

std::string Reason(int error) { return error != 0 ? std::strerror(error) : ""; }

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
    Replacement(const std::string& target, mode_t mode) {
        const std::filesystem::path path(target);
        target_ = path.filename().string();
        const std::filesystem::path parent = path.parent_path();
        const std::string folder = parent.empty() ? "." : parent.string();
        folder_ = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (folder_ < 0) return;
        // The name is given through /proc.
        if (access(kDescriptors, X_OK) == 0) {
            descriptor_ = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
        }
        for (int number = 0; descriptor_ < 0 && number < kMostNames; ++number) {
            name_ = NameOf(number);
            descriptor_ =
                openat(folder_, name_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode);
            if (descriptor_ < 0) name_.clear();
            if (descriptor_ < 0 && errno != EEXIST) return;
        }
    }
    ~Replacement() {
        const int error = errno;
        Remove();
        if (folder_ >= 0) close(folder_);
        errno = error;
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // -1 if the file cannot be created; errno has the reason.
    int Descriptor() const { return descriptor_; }

    // Removes the name, if any, so that the file disappears with its descriptor.
    void Remove() {
        if (name_.empty()) return;
        unlinkat(folder_, name_.c_str(), 0);
        name_.clear();
    }

    // Replaces the target by the file; call while the descriptor is open. Returns whether it
    // succeeded; if not, errno has the reason.
    bool Replace() {
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

  private:
    static constexpr const char* kDescriptors = "/proc/self/fd/";
    static constexpr int kMostNames = 1000;

    // Short, whatever the target's name.
    static std::string NameOf(int number) {
        return ".orx-" + std::to_string(getpid()) + '-' + std::to_string(number);
    }

    bool Link(const std::string& name) const {
        const std::string file = kDescriptors + std::to_string(descriptor_);
        return linkat(AT_FDCWD, file.c_str(), folder_, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }

    bool Rename() {
        if (renameat(folder_, name_.c_str(), folder_, target_.c_str()) != 0) return false;
        name_.clear();
        return true;
    }

    int folder_ = -1;
    int descriptor_ = -1;
    std::string target_;  // its name in the directory
    std::string name_;    // the file's current name; empty if none
};

// Copies the owner and mode of the file that is replaced. If the group cannot be kept, it gets only
// the rights of others. Returns a warning, or "".
std::string KeepOwner(OutputFile& file, const struct stat& old) {
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
std::string Fill(OutputFile& file, const std::function<std::string(OutputFile&)>& fill) {
    if (file.Error() != 0) return Reason(file.Error());
    const std::string problem = fill(file);
    if (file.Error() == 0) file.Note(fsync(file.Descriptor()) == 0);
    return file.Error() != 0 ? Reason(file.Error()) : problem;
}

// Copies a complete file over another.
void CopyInPlace(OutputFile& whole, OutputFile& target) {
    std::array<char, std::size_t{1} << 16> piece;
    whole.Note(lseek(whole.Descriptor(), 0, SEEK_SET) == 0);
    while (whole.Error() == 0 && target.Error() == 0) {
        const ssize_t count = read(whole.Descriptor(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        whole.Note(count >= 0);
        if (count <= 0) break;
        target.Append({piece.data(), static_cast<std::size_t>(count)});
    }
    if (target.Error() == 0) target.Note(fsync(target.Descriptor()) == 0);
}

// Overwrites the existing file with a complete text.
std::string WriteInPlace(const std::string& path,
                         const std::function<std::string(OutputFile&)>& fill) {
    std::error_code none;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(none);
    Replacement temporary(folder / "orx", S_IRUSR | S_IWUSR);
    OutputFile whole(temporary.Descriptor());
    temporary.Remove();
    std::string problem = Fill(whole, fill);
    if (!problem.empty()) return problem;
    OutputFile target(open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    CopyInPlace(whole, target);
    target.Close();
    return Reason(target.Error() != 0 ? target.Error() : whole.Error());
}

// Returns the reason why the file cannot be written; empty on success.
std::string WriteTo(const std::string& path, const WriteOptions& options,
                    const std::function<std::string(OutputFile&)>& fill, std::string& warning) {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return Reason(EISDIR);
    if (exists && !S_ISREG(status.st_mode)) {
        OutputFile device(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        const std::string problem = device.Error() == 0 ? fill(device) : "";
        device.Close();
        return device.Error() != 0 ? Reason(device.Error()) : problem;
    }
    if (exists && access(path.c_str(), W_OK) != 0) return Reason(errno);
    if (exists && status.st_nlink > 1 && !options.inPlace) {
        return "it has " + std::to_string(status.st_nlink - 1) +
               " further names (hard links), which would keep the old file (--in-place writes it "
               "under all its names)";
    }
    if (exists && options.inPlace) return WriteInPlace(path, fill);
    const std::string target = Followed(path);
    if (target.empty()) return Reason(errno);
    Replacement replacement(target, exists ? status.st_mode & kPermissions : 0666);
    OutputFile file(replacement.Descriptor());
    if (exists) warning = KeepOwner(file, status);
    std::string problem = Fill(file, fill);
    if (!problem.empty()) return problem;
    file.Note(replacement.Replace());
    return Reason(file.Error());
}

}  // namespace

OutputFile::OutputFile(int descriptor) : descriptor_(descriptor) { Note(descriptor >= 0); }

void OutputFile::Note(bool succeeded) {
    if (!succeeded && error_ == 0) error_ = errno;
}

void OutputFile::Append(std::string_view text) {
    while (error_ == 0 && !text.empty()) {
        const ssize_t count = write(descriptor_, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            Note(false);
        }
    }
}

void OutputFile::Close() {
    if (descriptor_ >= 0) Note(close(descriptor_) == 0);
    descriptor_ = -1;
}

bool WriteFile(const std::string& path, const WriteOptions& options,
               const std::function<std::string(OutputFile&)>& fill, Messages& messages) {
    std::string warning;
    const std::string reason = WriteTo(path, options, fill, warning);
    if (!reason.empty()) {
        messages.AddError({path, 0, 0, "cannot be written: " + reason});
    } else if (!warning.empty()) {
        messages.AddWarning({path, 0, 0, warning});
    }
    return reason.empty();
}

}  // namespace exchange
