// Back references: building and updating them.

#include "model/Relation.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <string_view>

#include "model/Model.h"

namespace kor {

SdaiEntityInstance* SourceWalk::TakeOfBoth() {
    if (next == end || IsCreatedBefore(*late, *next)) return *late++;
    // One that left and returned is in both.
    if (*late == *next) ++late;
    return *next++;
}

SdaiEntityInstance* Relation::TargetOfTyped(const Cell& cell) { return ToHandle(cell, true); }

SdaiEntityInstance* Relation::TargetOf(const SdaiEntityInstance& source) const {
    const Instance& instance = Instance::Of(source);
    instance.FetchCells();
    const std::size_t number = instance.Type().number;
    const Index slot = number < slots_.size() ? slots_[number] : std::nullopt;
    return slot ? TargetOf(instance.Cells()[*slot]) : nullptr;
}

void Relation::AddType(const ModelType& type, std::size_t slot) {
    if (slots_.size() <= type.number) slots_.resize(type.number + 1);
    slots_[type.number] = slot;
}

void Relation::Fill(const Model& model) noexcept {
    Clear();
    lost_ = false;
    anyLeft_ = false;
    mayReadTargets_ = !model.RefersOutside(std::string_view(attribute_));
    try {
        for (const ModelType& type : model.Types()) {
            if (type.number >= slots_.size() || !slots_[type.number]) continue;
            const std::size_t slot = *slots_[type.number];
            type.ForEachInstance([&](Instance& source) {
                if (const SdaiEntityInstance* target = TargetOf(source.Cells()[slot])) {
                    Add(target, source);
                }
            });
        }
    } catch (const std::bad_alloc&) {
        Lose();
    }
}

void Relation::Lose() {
    lost_ = true;
    Clear();
}

void Relation::Clear() {
    targets_.ForEach([](const Sources& sources) {
        if (sources.IsList()) delete sources.AsList();
    });
    targets_.Clear();
}

void Relation::Change(const SdaiEntityInstance* before, const SdaiEntityInstance* target,
                      SdaiEntityInstance& source) noexcept {
    if (lost_ || before == target) return;
    if (before != nullptr) Remove(before);
    if (target == nullptr) return;
    try {
        Add(target, source);
    } catch (const std::bad_alloc&) {
        Lose();
    }
}

Relation::Sources& Relation::SourcesFor(const SdaiEntityInstance& target,
                                        const SdaiEntityInstance& source) {
    if (Sources* const sources = targets_.Find(&target)) return *sources;
    if (!mayReadTargets_) return targets_.Add(&target);
    const ModelType& type = Instance::Of(target).Type();
    // Another model may be gone before this one.
    if (type.model != Instance::Of(source).Type().model) return targets_.Add(&target);
    return targets_.Add(&target, type.memory, Instance::Size(type));
}

void Relation::Add(const SdaiEntityInstance* target, SdaiEntityInstance& source) {
    Sources& sources = SourcesFor(*target, source);
    if (sources.one == nullptr) {
        sources.one = &source;
        return;
    }
    if (!sources.IsList()) {
        auto list = std::make_unique<List>();
        list->Add(sources.one);
        list->Add(&source);
        sources.SetList(list.release());
        return;
    }
    sources.AsList()->Add(&source);
}

// A source that leaves is not removed at once: its own reference shows that it left. When half of a
// list has left, these are removed.
void Relation::Remove(const SdaiEntityInstance* target) {
    Sources* sources = targets_.Find(target);
    if (sources == nullptr) return;
    if (!sources->IsList()) {
        sources->one = nullptr;
        return;
    }
    anyLeft_ = true;
    List& list = *sources->AsList();
    if (2 * ++list.left < list.Size()) return;
    list.PutInOrder();
    list.Join();
    std::erase_if(list.members,
                  [&](const SdaiEntityInstance* source) { return TargetOf(*source) != target; });
    list.left = 0;
}

SourceWalk Relation::SourcesOf(const SdaiEntityInstance* target) const {
    const Sources* sources = targets_.Find(target);
    if (sources == nullptr || sources->one == nullptr) return {};
    if (!sources->IsList()) return {&sources->one, &sources->one + 1};
    List& list = *sources->AsList();
    if (!list.inOrder.load(std::memory_order_acquire)) {
        const std::lock_guard lock(orderMutex_);
        list.PutInOrder();
    }
    return {list.members.data(), list.members.data() + list.members.size(), list.late.data(),
            list.late.data() + list.late.size()};
}

void Relation::List::Add(SdaiEntityInstance* source) {
    if (members.empty() || IsCreatedBefore(members.back(), source)) {
        members.push_back(source);
    } else if (members.back() != source) {
        late.push_back(source);
        inOrder.store(false, std::memory_order_relaxed);
    }
    // Putting in order, which a reader does, needs no memory.
    if (!late.empty() && members.capacity() < Size()) members.reserve(2 * Size());
}

void Relation::List::PutInOrder() {
    if (inOrder.load(std::memory_order_relaxed)) return;
    // A few are inserted; many are sorted with the others.
    constexpr std::size_t kFew = 8;
    if (late.size() - ordered > kFew) {
        std::sort(late.begin(), late.end(), IsCreatedBefore);
    } else {
        for (; ordered < late.size(); ++ordered) {
            const auto added = late.begin() + static_cast<std::ptrdiff_t>(ordered);
            const auto place = std::upper_bound(late.begin(), added, *added, IsCreatedBefore);
            std::rotate(place, added, added + 1);
        }
    }
    late.erase(std::unique(late.begin(), late.end()), late.end());
    ordered = late.size();
    // With the square root of all, inserting one and its share of joining cost the least.
    constexpr std::size_t kShare = 16;
    if (late.size() * late.size() > kShare * members.size()) Join();
    inOrder.store(true, std::memory_order_release);
}

void Relation::List::Join() {
    const auto middle = static_cast<std::ptrdiff_t>(members.size());
    members.insert(members.end(), late.begin(), late.end());
    std::inplace_merge(members.begin(), members.begin() + middle, members.end(), IsCreatedBefore);
    members.erase(std::unique(members.begin(), members.end()), members.end());
    late.clear();
    ordered = 0;
}

}  // namespace kor
