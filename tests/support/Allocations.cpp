// The allocation functions of the test programs, which count and fail on request.

#include "Allocations.h"

#include <cstdlib>
#include <new>

// The operators of the whole test program, including the shared libraries that it loads.

static thread_local long allocations = 0;

// The number of allocations that succeed before one fails; -1: none fails.
static thread_local long succeeding = -1;
static thread_local bool failsOnward = false;
static thread_local bool failed = false;

// Whether this allocation fails.
static bool Fails() {
    if (succeeding < 0 || succeeding-- != 0) return false;
    succeeding = failsOnward ? 0 : -1;
    failed = true;
    return true;
}

// Null if the allocation fails.
static void* TryAllocate(std::size_t size) noexcept {
    ++allocations;
    return Fails() ? nullptr : std::malloc(size != 0 ? size : 1);
}

static void* AllocateAligned(std::size_t size, std::align_val_t alignment) {
    ++allocations;
    const auto boundary = static_cast<std::size_t>(alignment);
    const std::size_t rounded = (size + boundary - 1) / boundary * boundary;
    if (void* memory = Fails() ? nullptr : std::aligned_alloc(boundary, rounded)) return memory;
    throw std::bad_alloc();
}

static void* Allocate(std::size_t size) {
    if (void* memory = TryAllocate(size)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return TryAllocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return TryAllocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateAligned(size, alignment);
}
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

long AllocationCounter::Total() { return allocations; }

FailingAllocations::FailingAllocations(long count, Extent extent) {
    failsOnward = extent == Extent::FromThenOn;
    failed = false;
    succeeding = count;
}

FailingAllocations::~FailingAllocations() { succeeding = -1; }

bool FailingAllocations::HaveFailed() const { return failed; }
