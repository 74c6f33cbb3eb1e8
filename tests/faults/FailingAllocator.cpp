// Loaded before a program (LD_PRELOAD), runs it again and again and lets an allocation fail:
// whatever asks for memory after main has begun, in the program or in a library, counts. Each run
// is a process of its own, split off where main begins, so that the program is loaded once.
//
//   FAIL_FOLDER=FOLDER  the standard input, output and error output of a run are the files in,
//   stdout
//                       and stderr of this folder; count has the number of its allocations
//
// Each line of the standard input asks for a run: N, the number of the allocation that fails,
// counted from 1 (0: none), and 1 if all that follow fail as well, else 0. The answer, a line of
// the standard output, is the exit status of the run, or the number of the signal that ended it,
// with a minus.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

// glibc's own, under names that stay when others take theirs.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

std::atomic<bool> counting{false};
std::atomic<long> allocations{0};
long failAt = 0;
bool failsOnward = false;

bool Fails() {
    if (!counting.load(std::memory_order_relaxed)) return false;
    const long number = allocations.fetch_add(1, std::memory_order_relaxed) + 1;
    if (failAt == 0 || number < failAt || (number > failAt && !failsOnward)) return false;
    errno = ENOMEM;
    return true;
}

constexpr unsigned kLongestRun = 60;  // seconds
int folder = -1;

int Opened(const char* file, int flags) { return openat(folder, file, flags | O_CLOEXEC, 0600); }

constexpr int kAnew = O_WRONLY | O_CREAT | O_TRUNC;

void Redirect(int descriptor, const char* file, int flags) {
    const int opened = Opened(file, flags);
    if (opened < 0 || dup2(opened, descriptor) < 0) _exit(126);
    close(opened);
}

void WriteCount() {
    const int descriptor = Opened("count", kAnew);
    if (descriptor < 0) return;
    dprintf(descriptor, "%ld", allocations.load());
    close(descriptor);
}

using Main = int (*)(int, char**, char**);
Main theMain = nullptr;

// Reads what is asked for next; false at the end.
bool NextRun() {
    char line[64];
    const ssize_t length = read(STDIN_FILENO, line, sizeof line - 1);
    if (length <= 0) return false;
    line[length] = '\0';
    int onward = 0;
    if (std::sscanf(line, "%ld %d", &failAt, &onward) != 2) return false;
    failsOnward = onward != 0;
    return true;
}

// The exit status of a process, or its signal with a minus.
int StatusOf(pid_t process) {
    int status = 0;
    if (waitpid(process, &status, 0) < 0) return 126;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int RunAgainAndAgain(int argc, char** argv, char** environment) {
    const char* name = std::getenv("FAIL_FOLDER");
    if (name == nullptr) return theMain(argc, argv, environment);
    folder = open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) _exit(126);
    while (NextRun()) {
        const pid_t process = fork();
        if (process == 0) {
            Redirect(STDIN_FILENO, "in", O_RDONLY);
            Redirect(STDOUT_FILENO, "stdout", kAnew);
            Redirect(STDERR_FILENO, "stderr", kAnew);
            alarm(kLongestRun);
            counting = true;
            return theMain(argc, argv, environment);
        }
        dprintf(STDOUT_FILENO, "%d\n", process < 0 ? 126 : StatusOf(process));
    }
    _exit(0);
}

struct AtEnd {
    ~AtEnd() {
        if (!counting.exchange(false)) return;
        WriteCount();
    }
} atEnd;

}  // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT void* malloc(std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }

EXPORT void* calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : __libc_calloc(count, size);
}

EXPORT void* realloc(void* memory, std::size_t size) {
    return Fails() ? nullptr : __libc_realloc(memory, size);
}

EXPORT void* memalign(std::size_t alignment, std::size_t size) {
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}

EXPORT void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

EXPORT int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}

EXPORT int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                             void (*linkerFini)(), void* stack) {
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    theMain = main;
    const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(&RunAgainAndAgain, argc, argv, init, fini, linkerFini, stack);
}
