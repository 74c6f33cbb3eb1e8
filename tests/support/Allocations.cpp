#include "Allocations.h"

#include <cstdlib>
#include <new>

// The operators of the whole test program, the shared libraries that it loads included.

static thread_local long allocations = 0;

static void* Allocate(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

long AllocationCounter::Total() { return allocations; }
