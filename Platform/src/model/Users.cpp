// Finds the users of an instance by back references.

#include "SdaiUsers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <span>
#include <vector>

#include "model/MemberIndex.h"
#include "model/Model.h"

using kor::Instance;
using kor::IsCreatedBefore;
using kor::Model;
using kor::Relation;
using kor::SourceWalk;

namespace {

bool IsOfKind(const SdaiEntityInstance& instance, const SdaiName& type) {
    return Instance::Of(instance).Type().entity->IsKindOf(type);
}

// The instances found so far; a few are stored in place.
class Found {
  public:
    Found(std::span<SdaiEntityInstance*> few, std::vector<SdaiEntityInstance*>& many)
        : few_(few), many_(many) {}

    void Add(SdaiEntityInstance* instance) {
        if (count_ < few_.size()) {
            few_[count_++] = instance;
            return;
        }
        if (count_ == few_.size()) many_.assign(few_.begin(), few_.end());
        many_.push_back(instance);
        ++count_;
    }

    std::span<SdaiEntityInstance*> Members() {
        return count_ <= few_.size() ? few_.first(count_) : std::span(many_);
    }

  private:
    std::span<SdaiEntityInstance*> few_;
    std::vector<SdaiEntityInstance*>& many_;
    std::size_t count_ = 0;
};

// Adds the sources of a target.
template <class IsWanted>
void AddSources(const Relation& relation, const SdaiEntityInstance* target, IsWanted isWanted,
                Found& found) {
    if (target == nullptr) return;
    SourceWalk sources = relation.SourcesOf(target);
    while (SdaiEntityInstance* source = sources.Take()) {
        // Its attributes are read soon.
        __builtin_prefetch(source);
        if (relation.IsSource(*source, target) && isWanted(*source)) found.Add(source);
    }
}

// Sorts the sources of several targets by creation and removes duplicates.
std::span<SdaiEntityInstance*> InOrder(std::span<SdaiEntityInstance*> members) {
    if (members.size() < 2) return members;
    std::sort(members.begin(), members.end(), IsCreatedBefore);
    const auto end = std::unique(members.begin(), members.end());
    return members.first(static_cast<std::size_t>(end - members.begin()));
}

}  // namespace

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate)
    : walked_(aggregate) {}

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type,
                                             const SdaiName& attribute,
                                             std::span<const SdaiEntityInstance* const> targets) {
    if (model == nullptr || Find(*model, type, attribute, nullptr, targets)) return;
    walked_ = model->GetEntityExtent(type);
}

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type,
                                             const SdaiName& attribute, const SdaiName& next,
                                             std::span<const SdaiEntityInstance* const> targets) {
    if (model == nullptr || Find(*model, type, attribute, &next, targets)) return;
    walked_ = model->GetEntityExtent(type);
}

// Returns false if the model has no back references for this.
bool SdaiIterator_Of_Users::Find(const SdaiModel& model, const SdaiName& type,
                                 const SdaiName& attribute, const SdaiName* next,
                                 std::span<const SdaiEntityInstance* const> targets) {
    const Relation* relation = Model::Of(model).FindRelation(attribute);
    if (relation == nullptr) return false;
    const Relation* nextRelation = relation;
    if (next != nullptr) {
        // An instance in between may belong to another model, whose references are unknown here.
        if (Model::Of(model).RefersOutside(attribute)) return false;
        nextRelation = Model::Of(model).FindRelation(*next);
        if (nextRelation == nullptr) return false;
    }
    const auto isOfType = [&type](const SdaiEntityInstance& user) { return IsOfKind(user, type); };
    if (next == nullptr && targets.size() == 1) {
        // The sources are already in order, and there may be many.
        if (targets.front() == nullptr) return true;
        const SourceWalk sources = relation->SourcesOf(targets.front());
        next_ = sources.next;
        end_ = sources.end;
        late_ = sources.late;
        lateEnd_ = sources.lateEnd;
        relation_ = relation;
        type_ = &type;
        target_ = targets.front();
        return true;
    }
    try {
        Found found(few_, many_);
        if (next == nullptr) {
            for (const SdaiEntityInstance* target : targets) {
                AddSources(*relation, target, isOfType, found);
            }
        } else {
            std::array<SdaiEntityInstance*, 8> few;
            std::vector<SdaiEntityInstance*> many;
            Found between(few, many);
            for (const SdaiEntityInstance* target : targets) {
                AddSources(
                    *nextRelation, target, [](const auto&) { return true; }, between);
            }
            for (const SdaiEntityInstance* target : InOrder(between.Members())) {
                AddSources(*relation, target, isOfType, found);
            }
        }
        const std::span<SdaiEntityInstance*> users = InOrder(found.Members());
        next_ = users.data();
        end_ = next_ + users.size();
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate,
                                             const SdaiName& attribute,
                                             const SdaiEntityInstance* target) {
    if (aggregate == nullptr || target == nullptr) return;
    if (!FindMembers(*aggregate, attribute, *target)) walked_ = aggregate;
}

// Returns false if visiting every member is as fast, or if the model has no back references.
bool SdaiIterator_Of_Users::FindMembers(const SdaiAggrInstance& aggregate,
                                        const SdaiName& attribute,
                                        const SdaiEntityInstance& target) {
    const SdaiEntityInstance* first = aggregate.GetInstanceMember(0);
    const kor::MemberIndex* index = kor::AggregateAccess::IndexOf(aggregate);
    if (first == nullptr || index == nullptr || kor::AggregateAccess::IsMixed(aggregate)) {
        return false;
    }
    const Relation* relation = Instance::Of(*first).Type().model->FindRelation(attribute);
    if (relation == nullptr) return false;
    SourceWalk sources = relation->SourcesOf(&target);
    if (sources.Size() > kor::AggregateAccess::Count(aggregate)) return false;
    try {
        Found found(few_, many_);
        while (SdaiEntityInstance* source = sources.Take()) {
            if (!relation->IsSource(*source, &target)) continue;
            for (std::uint32_t i = index->CountOf(source); i > 0; --i) found.Add(source);
        }
        next_ = found.Members().data();
        end_ = next_ + found.Members().size();
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

SdaiBoolean SdaiIterator_Of_Users::Next() {
    current_ = nullptr;
    if (walked_ != nullptr) {
        if (position_ + 1 >= walked_->GetMemberCount()) return sdaiFALSE;
        current_ = walked_->GetInstanceMember(++position_);
        return sdaiTRUE;
    }
    const auto isUser = [this](const SdaiEntityInstance& source) {
        return relation_ == nullptr ||
               (static_cast<const Relation*>(relation_)->IsSource(source, target_) &&
                IsOfKind(source, *type_));
    };
    SourceWalk sources{next_, end_, late_, lateEnd_};
    do {
        current_ = sources.Take();
    } while (current_ != nullptr && !isUser(*current_));
    next_ = sources.next;
    late_ = sources.late;
    return SdaiBoolean(current_ != nullptr);
}
