// Memory that is allocated piece by piece and freed as a whole.

#include "model/Arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace kor {

namespace {

// The size of a large memory page, which takes one page fault instead of the 512 of small pages.
constexpr std::size_t kLargePage = std::size_t{1} << 21;
constexpr std::align_val_t kAlignment{kLargePage};

bool IsLarge(std::size_t size) { return size >= kLargePage; }

}  // namespace

// Chunks double in size up to that of large pages, so that a small model stays small. A larger
// object gets its own chunk.
void Arena::AddChunk(std::size_t objectSize) {
    chunks_.reserve(chunks_.size() + 1);
    std::size_t size = std::max(nextSize_, objectSize);
    nextSize_ = std::min(2 * nextSize_, 2 * kLargePage);
    void* memory = nullptr;
    if (IsLarge(size)) {
        size = (size + kLargePage - 1) & ~(kLargePage - 1);
        memory = ::operator new(size, kAlignment);
        madvise(memory, size, MADV_HUGEPAGE);  // only a hint
    } else {
        memory = ::operator new(size);
    }
    CloseChunk();
    next_ = static_cast<std::byte*>(memory);
    end_ = next_ + size;
    chunks_.push_back({next_, size, next_});
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
