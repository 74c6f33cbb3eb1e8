// Finds instances by their instance names, and tracks names that are referred to before their
// instance exists.
//
// Instance names in a data set are mostly dense, so they index pages of 1,024 entries. Sparse or
// huge names go into a hash map instead, so that the table never grows out of proportion to the
// data.

#ifndef KOR_IDTABLE_H
#define KOR_IDTABLE_H

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <unordered_map>
#include <utility>
#include <vector>

class SdaiEntityInstance;

namespace kor {

// A seeded hash, so that no data set can provoke collisions.
struct IdHash {
    std::uint64_t seed = std::random_device{}();

    std::size_t operator()(std::uint64_t id) const {
        std::uint64_t x = id + seed;
        x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
        x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
        return x ^ (x >> 31);
    }
};

class IdTable {
  public:
    using Id = std::uint64_t;

    // The entry of an instance name: empty, the instance, or the first of the references that wait
    // for it. These form a chain: each reference stores the next one in its place.
    class Entry {
      public:
        SdaiEntityInstance* Instance() const {
            return IsPending() ? nullptr : reinterpret_cast<SdaiEntityInstance*>(value_);
        }
        void SetInstance(SdaiEntityInstance* instance) {
            value_ = reinterpret_cast<std::uintptr_t>(instance);
        }
        bool IsEmpty() const { return value_ == 0; }
        bool IsPending() const { return (value_ & 1) != 0; }
        // The chain as an even number; 0 at its end.
        std::uintptr_t Chain() const { return IsPending() ? value_ & ~std::uintptr_t{1} : 0; }
        void SetChain(std::uintptr_t chain) { value_ = chain | 1; }

      private:
        std::uintptr_t value_ = 0;
    };

    // Returns the entry of a name that is referred to, or whose instance is about to be set,
    // creating it if necessary. Valid until the next call.
    Entry& ForReference(Id id) {
        const std::size_t page = id / kPageSize;
        if (page < pages_.size() && pages_[page] != nullptr) return (*pages_[page])[id % kPageSize];
        return MakeEntry(id);
    }
    Entry& ForDefinition(Id id) {
        ++defined_;
        return ForReference(id);
    }

    SdaiEntityInstance* Find(Id id) const {
        const std::size_t page = id / kPageSize;
        if (page < pages_.size() && pages_[page] != nullptr) {
            return (*pages_[page])[id % kPageSize].Instance();
        }
        const auto found = sparse_.find(id);
        return found != sparse_.end() ? found->second.Instance() : nullptr;
    }

    // Calls visit(id, entry) for every entry with waiting references.
    template <class Visit>
    void ForEachPending(Visit visit) {
        for (std::size_t page = 0; page < pages_.size(); ++page) {
            for (std::size_t i = 0; pages_[page] != nullptr && i < kPageSize; ++i) {
                Entry& entry = (*pages_[page])[i];
                if (entry.IsPending()) visit(page * kPageSize + i, entry);
            }
        }
        for (auto& [id, entry] : sparse_) {
            if (entry.IsPending()) visit(id, entry);
        }
    }

    // Whether an instance name stands for an instance here as well as in another table.
    bool Shares(const IdTable& other) const {
        bool shares = false;
        other.ForEach(
            [&](Id id, const Entry& entry) {
                shares = shares || (entry.Instance() != nullptr && Find(id) != nullptr);
            },
            [this](std::size_t page) { return KnowsNothingOf(page); });
        return shares;
    }

    // Takes over what another table knows, with which it shares no instance name. Calls
    // join(entry, other) where both know something of a name; `entry` is to say what comes of it.
    template <class Join>
    void TakeOver(IdTable& other, Join join) {
        defined_ += other.defined_;
        for (std::size_t page = 0; page < other.pages_.size(); ++page) {
            if (other.pages_[page] == nullptr || !KnowsNothingOf(page)) continue;
            if (page >= pages_.size()) pages_.resize(page + 1);
            pages_[page] = std::move(other.pages_[page]);
            ++pageCount_;
        }
        other.ForEach(
            [&](Id id, const Entry& entry) {
                Entry& mine = ForReference(id);
                if (mine.IsEmpty()) {
                    mine = entry;
                } else {
                    join(mine, entry);
                }
            },
            [](std::size_t) { return false; });
    }

  private:
    bool KnowsNothingOf(std::size_t page) const {
        return (page >= pages_.size() || pages_[page] == nullptr) && sparse_.empty();
    }

    // Calls visit(id, entry) for every name of which something is known, but those in a page for
    // which skips(page) is true.
    template <class Visit, class Skips>
    void ForEach(Visit visit, Skips skips) const {
        for (std::size_t page = 0; page < pages_.size(); ++page) {
            if (skips(page)) continue;
            for (std::size_t i = 0; pages_[page] != nullptr && i < kPageSize; ++i) {
                const Entry& entry = (*pages_[page])[i];
                if (!entry.IsEmpty()) visit(page * kPageSize + i, entry);
            }
        }
        for (const auto& [id, entry] : sparse_) {
            if (!entry.IsEmpty()) visit(id, entry);
        }
    }

    static constexpr std::size_t kPageSize = 1024;
    static constexpr std::size_t kMostPages = std::size_t{1} << 20;
    using Page = std::array<Entry, kPageSize>;

    [[gnu::noinline]] Entry& MakeEntry(Id id) {
        const std::size_t page = id / kPageSize;
        // A new page must be worth its memory: on average, it must serve 64 instances.
        if (page >= kMostPages || pageCount_ > 16 + defined_ / 64) return sparse_[id];
        if (page >= pages_.size()) pages_.resize(page + 1);
        pages_[page] = std::make_unique<Page>();
        ++pageCount_;
        for (std::size_t i = 0; !sparse_.empty() && i < kPageSize; ++i) {
            const auto found = sparse_.find(page * kPageSize + i);
            if (found == sparse_.end()) continue;
            (*pages_[page])[i] = found->second;
            sparse_.erase(found);
        }
        return (*pages_[page])[id % kPageSize];
    }

    std::vector<std::unique_ptr<Page>> pages_;
    std::size_t pageCount_ = 0;
    std::size_t defined_ = 0;
    std::unordered_map<Id, Entry, IdHash> sparse_;
};

}  // namespace kor

#endif
