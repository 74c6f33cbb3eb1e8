// Aggregates: their layouts, members and owners.

#include "model/Aggregate.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

#include "SdaiEntityInstance.h"
#include "model/MemberIndex.h"
#include "services/Lasting.h"

using kor::Cell;
using kor::Tag;

namespace {

constexpr std::size_t kMostMembers = std::numeric_limits<std::uint32_t>::max();

// The layout that can store a value of this kind.
kor::AggregateAccess::Layout LayoutFor(Tag tag) {
    switch (tag) {
        case Tag::Real: return kor::AggregateAccess::Layout::Reals;
        case Tag::Integer: return kor::AggregateAccess::Layout::Integers;
        case Tag::Instance: return kor::AggregateAccess::Layout::Instances;
        default: return kor::AggregateAccess::Layout::Cells;
    }
}

// The layout that can store all members: those of one kind are stored bare. A pending reference
// counts as an instance.
kor::AggregateAccess::Layout LayoutFor(std::span<const Cell> members) {
    using Layout = kor::AggregateAccess::Layout;
    kor::TagSet kinds{};
    for (const Cell& member : members) kinds.Add(member.GetTag());
    if (members.empty()) return Layout::Cells;
    if (kinds.IsWithin({Tag::Real})) return Layout::Reals;
    if (kinds.IsWithin({Tag::Integer})) return Layout::Integers;
    if (kinds.IsWithin({Tag::Instance, Tag::Pending})) return Layout::Instances;
    return Layout::Cells;
}

std::size_t MemberSize(kor::AggregateAccess::Layout layout) {
    return layout == kor::AggregateAccess::Layout::Cells ? sizeof(Cell) : 8;
}

// Stores the number or pointer of a cell as a bare member.
void StoreBare(void* members, std::size_t position, const Cell& cell) {
    static_cast<std::uint64_t*>(members)[position] = cell.Get<std::uint64_t>();
}

bool HoldsAggregate(const Cell& cell) {
    if (cell.GetTag() == Tag::Typed) return HoldsAggregate(cell.Get<kor::TypedValue*>()->cell);
    return cell.GetTag() == Tag::Aggregate;
}

// Former members that are aggregates, of aggregates that still exist. There are so few that other
// aggregates pay only a flag for them.
class KeptMembers {
  public:
    void Keep(const SdaiAggrInstance& aggregate, const Cell& member) {
        const std::lock_guard lock(mutex_);
        members_[&aggregate].push_back(member);
    }

    std::vector<Cell> Take(const SdaiAggrInstance& aggregate) {
        const std::lock_guard lock(mutex_);
        const auto kept = members_.extract(&aggregate);
        if (members_.empty()) Members().swap(members_);
        return kept.empty() ? std::vector<Cell>() : std::move(kept.mapped());
    }

  private:
    using Members = std::unordered_map<const SdaiAggrInstance*, std::vector<Cell>>;

    std::mutex mutex_;
    Members members_;  // uses no memory while empty
};

// Models may be destroyed while the process ends.
KeptMembers& TheKeptMembers() { return kor::Lasting<KeptMembers>(); }

}  // namespace

// ---- Members

Cell kor::AggregateAccess::MemberCell(const SdaiAggrInstance& aggregate, std::size_t position) {
    switch (aggregate.layout_) {
        case Layout::Reals: return Cell::Of(Tag::Real, Members<double>(aggregate)[position]);
        case Layout::Integers: return Cell::Of(Tag::Integer, Members<long>(aggregate)[position]);
        case Layout::Instances: {
            // A null pointer is a member that is missing in a damaged data set.
            SdaiEntityInstance* instance = Members<SdaiEntityInstance*>(aggregate)[position];
            return instance != nullptr ? Cell::Of(Tag::Instance, instance) : Cell();
        }
        default: return Members<Cell>(aggregate)[position];
    }
}

SdaiPrimitiveH SdaiAggrInstance::GetMember(long position) const {
    if (position < 0 || position >= GetMemberCount()) return {};
    return kor::ToHandle(
        kor::AggregateAccess::MemberCell(*this, static_cast<std::size_t>(position)), selects_);
}

bool SdaiAggrInstance::IsMember(const SdaiEntityInstance* instance) const {
    if (instance == nullptr) return false;
    if (const kor::MemberIndex* index = kor::AggregateAccess::IndexOf(*this)) {
        return index->CountOf(instance) != 0;
    }
    if (layout_ == Layout::Instances) {
        SdaiEntityInstance** first = static_cast<SdaiEntityInstance**>(members_);
        return std::find(first, first + count_, instance) != first + count_;
    }
    for (long i = 0; i < GetMemberCount(); ++i) {
        if (GetInstanceMember(i) == instance) return true;
    }
    return false;
}

SdaiBoolean SdaiAggrInstance::IsMember(const SdaiPrimitiveH& value) const {
    if (const SdaiEntityInstance* instance = value) return SdaiBoolean(IsMember(instance));
    for (long i = 0; i < GetMemberCount(); ++i) {
        if (GetMember(i) == value) return sdaiTRUE;
    }
    return sdaiFALSE;
}

// ---- Finding instances among many members

const kor::MemberIndex* kor::AggregateAccess::IndexOf(const SdaiAggrInstance& aggregate) {
    // Below this number, a linear search is as fast as a lookup in the index.
    constexpr std::uint32_t kFew = 32;
    if (aggregate.count_ < kFew || aggregate.layout_ == Layout::Reals ||
        aggregate.layout_ == Layout::Integers) {
        return nullptr;
    }
    if (const kor::MemberIndex* made = aggregate.index_.load(std::memory_order_acquire))
        return made;
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    if (const kor::MemberIndex* made = aggregate.index_.load(std::memory_order_acquire))
        return made;
    try {
        auto index = std::make_unique<kor::MemberIndex>();
        index->Reserve(aggregate.count_);
        for (long i = 0; i < aggregate.GetMemberCount(); ++i) {
            const SdaiEntityInstance* instance = aggregate.GetInstanceMember(i);
            if (instance != nullptr) index->Add(instance);
        }
        aggregate.index_.store(index.get(), std::memory_order_release);
        return index.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// Updates the index after a member was added.
void kor::AggregateAccess::NoteMember(SdaiAggrInstance& aggregate, SdaiEntityInstance* instance) {
    kor::MemberIndex* index = aggregate.index_.load(std::memory_order_relaxed);
    if (index == nullptr || instance == nullptr) return;
    try {
        index->Add(instance);
    } catch (const std::bad_alloc&) {
        DropIndex(aggregate);
    }
}

void kor::AggregateAccess::DropIndex(SdaiAggrInstance& aggregate) {
    if (aggregate.index_.load(std::memory_order_relaxed) == nullptr) return;
    delete aggregate.index_.exchange(nullptr, std::memory_order_relaxed);
}

void kor::AggregateAccess::NoteModels(SdaiAggrInstance& aggregate,
                                      const SdaiEntityInstance* instance) {
    const SdaiEntityInstance* first = aggregate.GetInstanceMember(0);
    if (first == nullptr || instance == nullptr) return;
    if (first->FindEntityInstanceModel() != instance->FindEntityInstanceModel()) {
        aggregate.mixed_ = true;
    }
}

void kor::AggregateAccess::NoteModels(SdaiAggrInstance& aggregate) {
    if (aggregate.layout_ != Layout::Instances && aggregate.layout_ != Layout::Cells) return;
    for (long i = 1; i < aggregate.GetMemberCount() && !aggregate.mixed_; ++i) {
        NoteModels(aggregate, aggregate.GetInstanceMember(i));
    }
}

// ---- Growing and shrinking

void kor::AggregateAccess::Grow(SdaiAggrInstance& aggregate, std::size_t count) {
    if (count > kMostMembers) throw std::bad_alloc();
    // If the members are in memory of the model (capacity 0), growing moves them out of it.
    if (count <= aggregate.capacity_ || (count <= aggregate.count_ && aggregate.capacity_ == 0)) {
        return;
    }
    const std::size_t capacity = std::min(
        kMostMembers, std::max({count, std::size_t{2} * aggregate.count_, std::size_t{4}}));
    void* members = ::operator new(capacity* MemberSize(aggregate.layout_));
    if (aggregate.count_ != 0) {
        std::memcpy(members, aggregate.members_, aggregate.count_ * MemberSize(aggregate.layout_));
    }
    FreeMembers(aggregate);
    aggregate.members_ = members;
    aggregate.capacity_ = static_cast<std::uint32_t>(capacity);
}

// Converts bare members to cells, so that members of any kind can be added.
void kor::AggregateAccess::MakeCells(SdaiAggrInstance& aggregate) {
    if (aggregate.layout_ == Layout::Cells) return;
    // Keep the reserved capacity, so that later members do not allocate.
    const std::size_t capacity = std::max<std::size_t>({aggregate.count_, aggregate.capacity_, 4});
    auto* cells = static_cast<Cell*>(::operator new(capacity * sizeof(Cell)));
    for (std::size_t i = 0; i < aggregate.count_; ++i) cells[i] = MemberCell(aggregate, i);
    FreeMembers(aggregate);
    aggregate.members_ = cells;
    aggregate.capacity_ = static_cast<std::uint32_t>(capacity);
    aggregate.layout_ = Layout::Cells;
}

// The members must already be released.
void kor::AggregateAccess::FreeMembers(SdaiAggrInstance& aggregate) {
    const bool inPlace =
        aggregate.realList_ &&
        aggregate.members_ == static_cast<SdaiListClassOfSdaiReal&>(aggregate).inPlace_;
    if (aggregate.capacity_ != 0 && !inPlace) ::operator delete(aggregate.members_);
    aggregate.capacity_ = 0;
}

void SdaiAggrInstance::Reserve(long count) {
    if (!extent_ && count > 0) {
        kor::AggregateAccess::Grow(*this, static_cast<std::size_t>(count));
    }
}

void SdaiAggrInstance::Append(const SdaiPrimitiveH& value) {
    if (extent_) return;
    kor::CellHolder cell(kor::ToCell(value, nullptr));
    const Layout layout = LayoutFor(cell.Get().GetTag());
    if (count_ == 0 && layout != layout_ && !realList_) {
        // The first member determines the layout; capacity may already be reserved.
        const std::size_t room = capacity_ * MemberSize(layout_) / MemberSize(layout);
        capacity_ = static_cast<std::uint32_t>(std::min(room, kMostMembers));
        layout_ = layout;
    } else if (layout != layout_) {
        kor::AggregateAccess::MakeCells(*this);
    }
    kor::AggregateAccess::Grow(*this, std::size_t{count_} + 1);
    if (layout_ == Layout::Cells) {
        static_cast<Cell*>(members_)[count_] = cell.Take();
    } else {
        StoreBare(members_, count_, cell.Take());
    }
    ++count_;
    if (layout_ == Layout::Instances || layout_ == Layout::Cells) {
        SdaiEntityInstance* instance = GetInstanceMember(GetMemberCount() - 1);
        kor::AggregateAccess::NoteModels(*this, instance);
        kor::AggregateAccess::NoteMember(*this, instance);
    }
}

void kor::AggregateAccess::AppendReal(SdaiAggrInstance& aggregate, double value) {
    if (aggregate.layout_ != Layout::Reals) {
        static_cast<SdaiAggrInstance&>(aggregate).Append(SdaiPrimitiveH(value));
        return;
    }
    Grow(aggregate, std::size_t{aggregate.count_} + 1);
    Members<double>(aggregate)[aggregate.count_++] = value;
}

void kor::AggregateAccess::AppendToExtent(SdaiAggrInstance& extent, SdaiEntityInstance* instance) {
    Grow(extent, std::size_t{extent.count_} + 1);
    Members<SdaiEntityInstance*>(extent)[extent.count_++] = instance;
    NoteMember(extent, instance);
}

void SdaiAggrInstance::RemoveAll() {
    if (extent_) return;
    kor::AggregateAccess::DropIndex(*this);
    if (layout_ == Layout::Cells) {
        const Cell* cells = static_cast<const Cell*>(members_);
        // One at a time: if memory runs out, the rest stay members.
        while (count_ != 0) {
            const Cell& last = cells[count_ - 1];
            if (!kor::AggregateAccess::HasOwners(*this) && HoldsAggregate(last)) {
                TheKeptMembers().Keep(*this, last);
                keeps_ = true;
            } else {
                kor::ReleaseCell(last);
            }
            --count_;
        }
    }
    count_ = 0;
    mixed_ = false;
}

// On destruction, together with the former members that it keeps.
void kor::AggregateAccess::ReleaseMembers(SdaiAggrInstance& aggregate) {
    DropIndex(aggregate);
    if (aggregate.layout_ == Layout::Cells) {
        const Cell* cells = Members<Cell>(aggregate);
        std::for_each(cells, cells + aggregate.count_, kor::ReleaseCell);
    }
    aggregate.count_ = 0;
    if (aggregate.keeps_) {
        for (const Cell& kept : TheKeptMembers().Take(aggregate)) kor::ReleaseCell(kept);
    }
    aggregate.keeps_ = false;
}

SdaiAggrInstance::~SdaiAggrInstance() {
    kor::AggregateAccess::ReleaseMembers(*this);
    if (capacity_ != 0) ::operator delete(members_);
}

SdaiListClassOfSdaiReal::~SdaiListClassOfSdaiReal() {
    kor::AggregateAccess::ReleaseMembers(*this);
    kor::AggregateAccess::FreeMembers(*this);
}

// ---- Making and owning

// An aggregate in an arena whose members, `count` of them, are still to be set.
inline SdaiAggrInstance* kor::AggregateAccess::MakeIn(Arena& arena, Layout layout,
                                                      std::size_t count, bool selects) {
    const std::size_t size = sizeof(SdaiAggrInstance) + count * MemberSize(layout);
    auto* aggregate = new (arena.Allocate(size)) SdaiAggrInstance;
    aggregate->members_ = aggregate + 1;
    aggregate->count_ = static_cast<std::uint32_t>(count);
    aggregate->layout_ = layout;
    aggregate->selects_ = selects;
    return aggregate;
}

SdaiAggrInstance* kor::AggregateAccess::Make(std::span<const double> reals, bool selects,
                                             Arena& arena) {
    SdaiAggrInstance* const aggregate = MakeIn(arena, Layout::Reals, reals.size(), selects);
    std::copy(reals.begin(), reals.end(), Members<double>(*aggregate));
    return aggregate;
}

SdaiAggrInstance* kor::AggregateAccess::Make(std::span<const Cell> members, bool selects,
                                             kor::Arena* arena) {
    const Layout layout = LayoutFor(members);
    SdaiAggrInstance* aggregate = nullptr;
    if (arena != nullptr) {
        aggregate = MakeIn(*arena, layout, members.size(), selects);
    } else {
        aggregate = new SdaiAggrInstance;
        aggregate->layout_ = layout;
        aggregate->selects_ = selects;
        aggregate->owners_.store(1, std::memory_order_relaxed);
        try {
            Grow(*aggregate, members.size());
        } catch (...) {
            delete aggregate;
            throw;
        }
        aggregate->count_ = static_cast<std::uint32_t>(members.size());
    }
    if (layout == Layout::Cells) {
        std::copy(members.begin(), members.end(), static_cast<Cell*>(aggregate->members_));
    } else {
        for (std::size_t i = 0; i < members.size(); ++i) {
            StoreBare(aggregate->members_, i, members[i]);
        }
    }
    // While a data set is read there is only one model, and references may still be pending.
    if (arena == nullptr) NoteModels(*aggregate);
    return aggregate;
}

void kor::AggregateAccess::RemoveOwner(SdaiAggrInstance& aggregate) {
    if (aggregate.owners_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (aggregate.realList_) {
        delete static_cast<SdaiListClassOfSdaiReal*>(&aggregate);
    } else {
        delete &aggregate;
    }
}

SdaiListClassOfSdaiReal::SdaiListClassOfSdaiReal(unsigned, unsigned) {
    kor::AggregateAccess::MakeRealList(*this);
}

void SdaiListClassOfSdaiReal::Append(const double& value) {
    kor::AggregateAccess::AppendReal(*this, value);
}
