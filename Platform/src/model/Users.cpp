// Finds the users of an instance by back references.

#include "SdaiUsers.h"

#include <algorithm>
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

const Relation& RelationAt(const void* relation) { return *static_cast<const Relation*>(relation); }

// Calls visit(source) for each instance that refers to one of the targets. Its attributes are read
// soon, so that it is fetched from memory.
template <class Targets, class Visit>
void ForEachSource(const void* relation, const Targets& targets, Visit visit) {
    for (const SdaiEntityInstance* target : targets) {
        SourceWalk sources = RelationAt(relation).SourcesOf(target);
        while (SdaiEntityInstance* source = sources.Take()) {
            __builtin_prefetch(source);
            if (RelationAt(relation).IsSource(*source, target)) visit(source);
        }
    }
}

// Those of a type, in the order of creation, each once.
std::span<SdaiEntityInstance*> InOrder(std::span<SdaiEntityInstance*> instances,
                                       const SdaiName& type) {
    const auto isOther = [&type](const auto* instance) { return !IsOfKind(*instance, type); };
    const auto others = std::remove_if(instances.begin(), instances.end(), isOther);
    std::sort(instances.begin(), others, IsCreatedBefore);
    const auto end = std::unique(instances.begin(), others);
    return instances.first(static_cast<std::size_t>(end - instances.begin()));
}

}  // namespace

void SdaiIterator_Of_Users::Found::Add(SdaiEntityInstance* instance) {
    if (count_ < kFew) {
        few_[count_++] = instance;
        return;
    }
    if (count_ == kFew) many_.assign(few_, few_ + kFew);
    many_.push_back(instance);
    ++count_;
}

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate)
    : walked_(aggregate) {}

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type,
                                             const SdaiName& attribute,
                                             std::span<const SdaiEntityInstance* const> targets)
    : model_(model), type_(&type), targets_(targets) {
    if (model == nullptr || Begin(attribute, nullptr)) return;
    walked_ = model->GetEntityExtent(type);
}

SdaiIterator_Of_Users::SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type,
                                             const SdaiName& attribute, const SdaiName& next,
                                             std::span<const SdaiEntityInstance* const> targets)
    : model_(model), type_(&type), targets_(targets) {
    if (model == nullptr || Begin(attribute, &next)) return;
    walked_ = model->GetEntityExtent(type);
}

// Returns false if the model has no back references for this.
bool SdaiIterator_Of_Users::Begin(const SdaiName& attribute, const SdaiName* next) {
    const Model& model = Model::Of(*model_);
    const Relation* const relation = model.FindRelation(attribute);
    const Relation* first = relation;
    if (next != nullptr) {
        // An instance in between may belong to another model, whose references are unknown here.
        if (model.RefersOutside(attribute)) return false;
        first = model.FindRelation(*next);
        nextRelation_ = first;
    }
    if (relation == nullptr || first == nullptr) return false;
    relation_ = relation;
    if (next == nullptr && targets_.size() == 1) {
        // The sources are already in order, and there may be many.
        target_ = targets_.front();
        const SourceWalk sources = relation->SourcesOf(target_);
        next_ = sources.next;
        end_ = sources.end;
        late_ = sources.late;
        lateEnd_ = sources.lateEnd;
        return true;
    }
    for (const SdaiEntityInstance* target : targets_) first->FetchSourcesOf(target);
    step_ = next != nullptr ? Step::FindBetween : Step::FindUsers;
    return true;
}

void SdaiIterator_Of_Users::Fetch() {
    if (step_ == Step::None) return;
    try {
        TakeStep();
    } catch (const std::bad_alloc&) {
        step_ = Step::None;
        walked_ = model_->GetEntityExtent(*type_);
    }
}

void SdaiIterator_Of_Users::TakeStep() {
    switch (step_) {
        case Step::FindBetween:
            ForEachSource(nextRelation_, targets_, [this](SdaiEntityInstance* between) {
                between_.Add(between);
                RelationAt(relation_).FetchSourcesOf(between);
            });
            step_ = Step::FindUsers;
            break;
        case Step::FindUsers: {
            const auto add = [this](SdaiEntityInstance* user) { users_.Add(user); };
            if (nextRelation_ == nullptr) {
                ForEachSource(relation_, targets_, add);
            } else {
                ForEachSource(relation_, between_.Members(), add);
            }
            step_ = Step::PutInOrder;
            break;
        }
        case Step::PutInOrder:
            Visit(InOrder(users_.Members(), *type_));
            step_ = Step::None;
            break;
        case Step::None: break;
    }
}

void SdaiIterator_Of_Users::Visit(std::span<SdaiEntityInstance* const> users) {
    next_ = users.data();
    end_ = next_ + users.size();
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
        while (SdaiEntityInstance* source = sources.Take()) {
            if (!relation->IsSource(*source, &target)) continue;
            for (std::uint32_t i = index->CountOf(source); i > 0; --i) users_.Add(source);
        }
        Visit(users_.Members());
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

SdaiBoolean SdaiIterator_Of_Users::Next() {
    while (step_ != Step::None) Fetch();
    current_ = nullptr;
    if (walked_ != nullptr) {
        if (position_ + 1 >= walked_->GetMemberCount()) return sdaiFALSE;
        current_ = walked_->GetInstanceMember(++position_);
        return sdaiTRUE;
    }
    const auto isUser = [this](const SdaiEntityInstance& source) {
        return target_ == nullptr ||
               (RelationAt(relation_).IsSource(source, target_) && IsOfKind(source, *type_));
    };
    SourceWalk sources{next_, end_, late_, lateEnd_};
    do {
        current_ = sources.Take();
    } while (current_ != nullptr && !isUser(*current_));
    next_ = sources.next;
    late_ = sources.late;
    return SdaiBoolean(current_ != nullptr);
}
