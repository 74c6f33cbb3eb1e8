// Who refers to an instance. The data access interface of ISO 10303-22 finds the users of an
// instance in a role; here the role is an attribute by its name, or two attributes, one after the
// other.
//
// A platform that keeps back references answers without a walk over the extent. One that does not
// may visit more instances than refer to a target, the whole extent at the most: whoever asks looks
// at the attributes of each instance that is visited.

#ifndef SDAIUSERS_H
#define SDAIUSERS_H

#include <span>
#include <vector>

#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiName.h"

// An iterator: built on the stack, before the first instance. It owns no instance; what it was
// built of must live and the models must not be written while it is in use. Any number of threads
// may ask a model that no thread writes.
class KOR_API SdaiIterator_Of_Users {
  public:
    // Over every member of an aggregate; a null aggregate has none. A select member gives the
    // instance that it holds.
    explicit SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate);

    // Over the instances of an entity type, its subtypes included, that refer to one of the targets
    // through the attribute, directly or through a select: each once, in the order of the extent. A
    // null model has no instances, a null target no users.
    SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type, const SdaiName& attribute,
                          std::span<const SdaiEntityInstance* const> targets);
    // Those that refer through the attribute to an instance of any type that refers through `next`
    // to one of the targets.
    SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type, const SdaiName& attribute,
                          const SdaiName& next, std::span<const SdaiEntityInstance* const> targets);

    // Over the members of an aggregate that refer to `target` through the attribute, each as often
    // as it is a member, in any order.
    SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate, const SdaiName& attribute,
                          const SdaiEntityInstance* target);

    SdaiIterator_Of_Users(const SdaiIterator_Of_Users&) = delete;
    SdaiIterator_Of_Users& operator=(const SdaiIterator_Of_Users&) = delete;
    ~SdaiIterator_Of_Users() = default;

    // Goes to the next instance; FALSE when there is none.
    SdaiBoolean Next();

    // The current instance; null where there is none.
    SdaiEntityInstance* GetCurrentMember() const { return current_; }

  private:
    bool Find(const SdaiModel& model, const SdaiName& type, const SdaiName& attribute,
              const SdaiName* next, std::span<const SdaiEntityInstance* const> targets);
    bool FindMembers(const SdaiAggrInstance& aggregate, const SdaiName& attribute,
                     const SdaiEntityInstance& target);

    // Every member of this aggregate is visited,
    const SdaiAggrInstance* walked_ = nullptr;
    long position_ = -1;
    // or else these instances. What was found stands in `few_` or, if it is more, in `many_`.
    SdaiEntityInstance* const* next_ = nullptr;
    SdaiEntityInstance* const* end_ = nullptr;
    SdaiEntityInstance* few_[8];
    std::vector<SdaiEntityInstance*> many_;
    // Where these are given, those alone that are of the type and refer to the target.
    const void* relation_ = nullptr;
    const SdaiName* type_ = nullptr;
    const SdaiEntityInstance* target_ = nullptr;

    SdaiEntityInstance* current_ = nullptr;
};

#endif
