// Memory that is allocated piece by piece and freed as a whole.

#include "model/Arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "services/Lasting.h"

namespace kor {

namespace {

// The size of a large memory page, which takes one page fault instead of the 512 of small pages.
constexpr std::size_t kLargePage = std::size_t{1} << 21;
constexpr std::size_t kLargestBlock = 2 * kLargePage;

static_assert(std::has_single_bit(kLargestBlock / Blocks::kSegment));

// g++ says so with a macro, clang with a feature.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
#else
constexpr bool kAddressSanitizer = false;
#endif

// Blocks of models that are gone, for those to come: fresh memory costs a process that reads one
// data set after another up to a third of its time.
class KeptBlocks {
  public:
    // Of any size; none if there is none.
    std::optional<Blocks::Block> Take() {
        const std::lock_guard lock(mutex_);
        if (count_ == 0) return std::nullopt;
        return blocks_[--count_];
    }

    // Returns the block for which there is no room, the smallest: this one or one kept before.
    std::optional<Blocks::Block> Keep(const Blocks::Block& block) {
        const std::lock_guard lock(mutex_);
        if (count_ != kMost) {
            blocks_[count_++] = block;
            return std::nullopt;
        }
        const auto end = blocks_.begin() + kMost;
        const auto smallest = std::min_element(
            blocks_.begin(), end,
            [](const Blocks::Block& a, const Blocks::Block& b) { return a.size < b.size; });
        if (smallest == end || smallest->size >= block.size) return block;
        return std::exchange(*smallest, block);
    }

  private:
    static constexpr std::size_t kRoom = 32;  // 128 MiB
    // Under AddressSanitizer none are kept, so that it sees what is used after its model is gone.
    static constexpr std::size_t kMost = kAddressSanitizer ? 0 : kRoom;

    std::mutex mutex_;
    std::array<Blocks::Block, kRoom> blocks_;
    std::size_t count_ = 0;
};

// Models may be destroyed while the process ends.
KeptBlocks& TheKeptBlocks() { return Lasting<KeptBlocks>(); }

std::align_val_t AlignmentOf(std::size_t blockSize) {
    return std::align_val_t{std::min(blockSize, kLargePage)};
}

Blocks::Block NewBlock(std::size_t size) {
    auto* const memory = static_cast<std::byte*>(::operator new(size, AlignmentOf(size)));
    madvise(memory, size, MADV_HUGEPAGE);  // only a hint
    return {memory, size};
}

// Makes room for one more, which then needs no memory. The room doubles; reserve alone would copy
// the list for each.
template <class T>
void MakeRoom(std::vector<T>& list) {
    constexpr std::size_t kLeast = 4;
    if (list.size() == list.capacity()) list.reserve(std::max(kLeast, 2 * list.size()));
}

}  // namespace

// ---- Blocks

std::byte* Blocks::TakeSegment() {
    if (next_ == end_) AddBlock();
    std::byte* const segment = next_;
    next_ += kSegment;
    return segment;
}

void Blocks::AddBlock() {
    MakeRoom(blocks_);
    const std::optional<Block> kept = TheKeptBlocks().Take();
    const Block block = kept ? *kept : NewBlock(nextSize_);
    nextSize_ = std::min(2 * nextSize_, kLargestBlock);
    blocks_.push_back(block);
    next_ = block.memory;
    end_ = next_ + block.size;
}

Blocks::~Blocks() {
    for (const Block& block : blocks_) {
        if (const std::optional<Block> rest = TheKeptBlocks().Keep(block)) {
            ::operator delete(rest->memory, AlignmentOf(rest->size));
        }
    }
}

void Blocks::TakeOver(Blocks& other) {
    ReserveFor(other);
    blocks_.insert(blocks_.end(), other.blocks_.begin(), other.blocks_.end());
    other.blocks_.clear();
    other.next_ = other.end_ = nullptr;
}

// ---- Arenas

void* Arena::AllocateApart(std::size_t size) {
    MakeRoom(apart_);
    return apart_.emplace_back(::operator new(size));
}

bool Arena::IsInSegment(const void* object) const {
    const auto* const place = static_cast<const std::byte*>(object);
    const std::less<const std::byte*> isBefore;
    return std::any_of(chunks_.begin(), chunks_.end(), [&](const Chunk& chunk) {
        return chunk.isSegment && !isBefore(place, chunk.memory) &&
               isBefore(place, chunk.memory + Blocks::kSegment);
    });
}

// Chunks double in size up to that of a segment, so that a small model stays small. A larger object
// gets its own chunk.
void Arena::AddChunk(std::size_t objectSize) {
    MakeRoom(chunks_);
    const std::size_t size = std::max(nextSize_, objectSize);
    const bool isSegment = size == Blocks::kSegment;
    auto* const memory =
        isSegment ? blocks_->TakeSegment() : static_cast<std::byte*>(::operator new(size));
    nextSize_ = std::min(2 * nextSize_, Blocks::kSegment);
    CloseChunk();
    next_ = memory;
    end_ = next_ + size;
    chunks_.push_back({memory, isSegment, memory});
}

Arena::~Arena() {
    for (const Chunk& chunk : chunks_) {
        if (!chunk.isSegment) ::operator delete(chunk.memory);
    }
    for (void* const memory : apart_) ::operator delete(memory);
}

}  // namespace kor
