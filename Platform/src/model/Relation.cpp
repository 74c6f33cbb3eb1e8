// Back references: building and updating them.

#include "model/Relation.h"

#include <algorithm>
#include <memory>

#include "model/Model.h"

namespace kor {

SdaiEntityInstance* Relation::TargetOfTyped(const Cell& cell) { return ToHandle(cell, true); }

SdaiEntityInstance* Relation::TargetOf(const SdaiEntityInstance& source) const {
    const Instance& instance = Instance::Of(source);
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
    const auto forEachSource = [&](auto visit) {
        for (const ModelType& type : model.Types()) {
            if (type.number >= slots_.size() || !slots_[type.number]) continue;
            const std::size_t slot = *slots_[type.number];
            type.ForEachInstance([&](Instance& source) {
                if (const SdaiEntityInstance* target = TargetOf(source.Cells()[slot])) {
                    visit(target, source);
                }
            });
        }
    };
    std::size_t count = 0;
    forEachSource([&count](const SdaiEntityInstance*, Instance&) { ++count; });
    try {
        targets_.Reserve(count);
        forEachSource(
            [this](const SdaiEntityInstance* target, Instance& source) { Add(target, source); });
    } catch (const std::bad_alloc&) {
        Lose();
    }
}

void Relation::Lose() {
    lost_ = true;
    Clear();
}

void Relation::Clear() {
    targets_.ForEach([](const void*, Sources& sources) {
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

void Relation::Add(const SdaiEntityInstance* target, SdaiEntityInstance& source) {
    Sources& sources = targets_.FindOrAdd(target);
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
    List& list = *sources->AsList();
    if (2 * ++list.left < list.members.size()) return;
    list.PutInOrder();
    std::erase_if(list.members,
                  [&](const SdaiEntityInstance* source) { return TargetOf(*source) != target; });
    list.ordered = list.members.size();
    list.left = 0;
}

std::span<SdaiEntityInstance* const> Relation::SourcesOf(const SdaiEntityInstance* target) const {
    const Sources* sources = targets_.Find(target);
    if (sources == nullptr || sources->one == nullptr) return {};
    if (!sources->IsList()) return {&sources->one, 1};
    List& list = *sources->AsList();
    if (!list.inOrder.load(std::memory_order_acquire)) {
        const std::lock_guard lock(orderMutex_);
        list.PutInOrder();
    }
    return list.members;
}

void Relation::List::Add(SdaiEntityInstance* source) {
    members.push_back(source);
    const bool follows =
        members.size() == 1 || IsCreatedBefore(members[members.size() - 2], source);
    if (follows && ordered + 1 == members.size()) {
        ++ordered;
    } else {
        inOrder.store(false, std::memory_order_relaxed);
    }
}

void Relation::List::PutInOrder() {
    if (ordered == members.size()) return;
    // A few members are inserted; many are sorted with the others. Neither allocates.
    constexpr std::size_t kFew = 8;
    if (members.size() - ordered > kFew) {
        std::sort(members.begin(), members.end(), IsCreatedBefore);
    } else {
        for (; ordered < members.size(); ++ordered) {
            const auto added = members.begin() + static_cast<std::ptrdiff_t>(ordered);
            const auto place = std::upper_bound(members.begin(), added, *added, IsCreatedBefore);
            std::rotate(place, added, added + 1);
        }
    }
    // A source that left and returned is in the list twice.
    members.erase(std::unique(members.begin(), members.end()), members.end());
    ordered = members.size();
    inOrder.store(true, std::memory_order_release);
}

}  // namespace kor
