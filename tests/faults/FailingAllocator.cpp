// Loaded before a program (LD_PRELOAD), lets an allocation fail: whatever asks for memory after
// main has begun, in the program or in a library, counts.
//
//   FAIL_AT=N       the N-th allocation fails, counted from 1; 0: none
//   FAIL_ONWARD=1   so do all that follow
//   FAIL_COUNT=FILE the number of allocations is written there when the program ends

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstddef>
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

void WriteCount() {
    const char* file = std::getenv("FAIL_COUNT");
    if (file == nullptr) return;
    const int descriptor = open(file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (descriptor < 0) return;
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, allocations.load()).ptr;
    [[maybe_unused]] const ssize_t written =
        write(descriptor, digits, static_cast<std::size_t>(end - digits));
    close(descriptor);
}

using Main = int (*)(int, char**, char**);
Main theMain = nullptr;

int CountingMain(int argc, char** argv, char** environment) {
    if (const char* at = std::getenv("FAIL_AT")) failAt = std::atol(at);
    failsOnward = std::getenv("FAIL_ONWARD") != nullptr;
    counting = true;
    return theMain(argc, argv, environment);
}

struct AtEnd {
    ~AtEnd() {
        counting = false;
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
    return start(&CountingMain, argc, argv, init, fini, linkerFini, stack);
}
