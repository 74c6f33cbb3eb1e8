// Memory that is allocated piece by piece and freed as a whole.

#ifndef KOR_ARENA_H
#define KOR_ARENA_H

#include <cstddef>
#include <utility>
#include <vector>

#include "KORExport.h"

namespace kor {

// The memory that the arenas of a model have in common: blocks, of which each arena gets a segment
// at a time. Blocks double in size up to that of two large memory pages, so that memory grows as
// the model does; a large page takes one page fault where small ones take hundreds. Some blocks
// stay with the process for the next model.
class KOR_API Blocks {
  public:
    static constexpr std::size_t kSegment = std::size_t{1} << 18;

    Blocks() = default;
    ~Blocks();
    Blocks(const Blocks&) = delete;
    Blocks& operator=(const Blocks&) = delete;

    // Memory of that size, uninitialised. It is freed with the blocks.
    std::byte* TakeSegment();

    // Takes over the blocks of another model. Needs no memory after ReserveFor.
    void TakeOver(Blocks& other);
    void ReserveFor(const Blocks& other) { blocks_.reserve(blocks_.size() + other.blocks_.size()); }

    struct Block {
        std::byte* memory;
        std::size_t size;
    };

  private:
    void AddBlock();

    std::vector<Block> blocks_;
    std::byte* next_ = nullptr;  // the free segments of a block
    std::byte* end_ = nullptr;
    std::size_t nextSize_ = kSegment;
};

class KOR_API Arena {
  public:
    // The blocks must outlive what is allocated.
    explicit Arena(Blocks& blocks) : blocks_(&blocks) {}
    ~Arena();
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // Uninitialised memory for an object of that size, aligned to 8 bytes. A large one stands
    // apart, where ForEach does not find it, so that it leaves no gap.
    void* Allocate(std::size_t size) {
        if (size > kLarge) return AllocateApart(size);
        void* memory = Reserve(size);
        TakeReserved(size);
        return memory;
    }
    // The memory that TakeReserved with that size allocates, without failing, however large.
    void* Reserve(std::size_t size) {
        size = Rounded(size);
        if (size > static_cast<std::size_t>(end_ - next_)) AddChunk(size);
        return next_;
    }
    void TakeReserved(std::size_t size) { next_ += Rounded(size); }

    // Takes over what another arena has allocated, after what this one has. The blocks of this one
    // must take over those of the other. Takes nothing if memory runs out.
    void TakeOver(Arena& other) {
        ReserveFor(other);
        apart_.insert(apart_.end(), other.apart_.begin(), other.apart_.end());
        other.apart_.clear();
        if (other.chunks_.empty()) return;
        CloseChunk();
        chunks_.insert(chunks_.end(), other.chunks_.begin(), other.chunks_.end());
        other.chunks_.clear();
        next_ = std::exchange(other.next_, nullptr);
        end_ = std::exchange(other.end_, nullptr);
    }
    // After this, taking over needs no memory.
    void ReserveFor(const Arena& other) {
        chunks_.reserve(chunks_.size() + other.chunks_.size());
        apart_.reserve(apart_.size() + other.apart_.size());
    }

    // Calls visit(memory) for every object but those that stand apart, in order of allocation. All
    // objects must have that size.
    template <class Visit>
    void ForEach(std::size_t size, Visit visit) const {
        size = Rounded(size);
        for (const Chunk& chunk : chunks_) {
            const std::byte* const end = &chunk != &chunks_.back() ? chunk.end : next_;
            for (std::byte* at = chunk.memory; at != end; at += size) visit(at);
        }
    }

    // Whether an object that this has allocated lies in a segment, with others of the arena alone.
    bool IsInSegment(const void* object) const;

  private:
    struct Chunk {
        std::byte* memory;
        bool isSegment;  // otherwise the arena frees it
        std::byte* end;  // of its objects; of the last chunk, that is next_
    };

    static constexpr std::size_t kLarge = Blocks::kSegment / 8;

    static std::size_t Rounded(std::size_t size) { return (size + 7) & ~std::size_t{7}; }

    void* AllocateApart(std::size_t size);
    void AddChunk(std::size_t objectSize);
    void CloseChunk() {
        if (!chunks_.empty()) chunks_.back().end = next_;
    }

    Blocks* blocks_;
    std::vector<Chunk> chunks_;
    std::vector<void*> apart_;   // the large objects
    std::byte* next_ = nullptr;  // the free memory of the last chunk
    std::byte* end_ = nullptr;
    std::size_t nextSize_ = std::size_t{1} << 10;
};

}  // namespace kor

#endif
