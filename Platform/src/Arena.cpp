#include "Arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace kor {

namespace {

// The size of a large page of memory. A chunk of such pages costs the system one page fault where
// small pages cost 512.
constexpr std::size_t kLargePage = std::size_t{1} << 21;
constexpr std::align_val_t kAlignment{kLargePage};

bool IsLarge(std::size_t size) { return size >= kLargePage; }

}  // namespace

// Chunks double in size, so that a small model stays small, up to one of large pages; an object
// that is larger has a chunk of its own.
void Arena::AddChunk(std::size_t objectSize) {
    chunks_.reserve(chunks_.size() + 1);
    std::size_t size = std::max(nextSize_, objectSize);
    nextSize_ = std::min(2 * nextSize_, 2 * kLargePage);
    void* memory = nullptr;
    if (IsLarge(size)) {
        size = (size + kLargePage - 1) & ~(kLargePage - 1);
        memory = ::operator new(size, kAlignment);
        madvise(memory, size, MADV_HUGEPAGE);  // a wish; the system may have none
    } else {
        memory = ::operator new(size);
    }
    chunks_.push_back({static_cast<std::byte*>(memory), size, 0});
}

Arena::~Arena() {
    for (const Chunk& chunk : chunks_) {
        if (IsLarge(chunk.size)) {
            ::operator delete(chunk.memory, kAlignment);
        } else {
            ::operator delete(chunk.memory);
        }
    }
}

}  // namespace kor
