// The users of an instance: the instances that refer to it. As in ISO 10303-22, they are found by
// role; here a role is the name of an attribute, or of two attributes that follow each other.
//
// A platform that keeps back references finds users without searching the extent. Any other
// platform may visit more instances than refer to a target, up to the whole extent, so the caller
// must check the attributes of every instance it visits.

#ifndef SDAIUSERS_H
#define SDAIUSERS_H

#include <cstddef>
#include <span>
#include <vector>

#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiName.h"

// An iterator, created on the stack and positioned before the first instance. It owns no instance.
// The arguments of its constructor must outlive it, and the models must not be written while it is
// in use. Any number of threads may iterate over a model that no thread writes.
class KOR_API SdaiIterator_Of_Users {
  public:
    // Visits every member of an aggregate; none if it is null. For a select member, visits the
    // instance that it holds.
    explicit SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate);

    // Visits the instances of an entity type and its subtypes that refer to one of the targets
    // through the attribute, directly or through a select: each once, in the order of the extent.
    // None if the model is null; a null target has no users.
    SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type, const SdaiName& attribute,
                          std::span<const SdaiEntityInstance* const> targets);
    // Visits those that refer through the attribute to an instance, of any type, that refers
    // through `next` to one of the targets.
    SdaiIterator_Of_Users(const SdaiModel* model, const SdaiName& type, const SdaiName& attribute,
                          const SdaiName& next, std::span<const SdaiEntityInstance* const> targets);

    // Visits the members of an aggregate that refer to `target` through the attribute, each as
    // often as it is a member, in any order.
    SdaiIterator_Of_Users(const SdaiAggrInstance* aggregate, const SdaiName& attribute,
                          const SdaiEntityInstance* target);

    SdaiIterator_Of_Users(const SdaiIterator_Of_Users&) = delete;
    SdaiIterator_Of_Users& operator=(const SdaiIterator_Of_Users&) = delete;
    ~SdaiIterator_Of_Users() = default;

    // Goes a step further in the search that Next completes: each step fetches from memory what the
    // following one reads. A caller who has other work until it needs the users calls it in
    // between, as often as it likes or not at all.
    void Fetch();

    // Moves to the next instance; returns FALSE if there is none.
    SdaiBoolean Next();

    // The current instance; null if there is none.
    SdaiEntityInstance* GetCurrentMember() const { return current_; }

  private:
    // Instances found so far; a few are stored in place.
    class Found {
      public:
        void Add(SdaiEntityInstance* instance);
        std::span<SdaiEntityInstance*> Members() {
            return count_ <= kFew ? std::span(few_, count_) : std::span(many_);
        }

      private:
        static constexpr std::size_t kFew = 8;
        SdaiEntityInstance* few_[kFew];
        std::vector<SdaiEntityInstance*> many_;
        std::size_t count_ = 0;
    };

    // What is left of a search.
    enum class Step : unsigned char { FindBetween, FindUsers, PutInOrder, None };

    bool Begin(const SdaiName& attribute, const SdaiName* next);
    void TakeStep();
    bool FindMembers(const SdaiAggrInstance& aggregate, const SdaiName& attribute,
                     const SdaiEntityInstance& target);
    void Visit(std::span<SdaiEntityInstance* const> users);

    // Every member of this aggregate is visited,
    const SdaiAggrInstance* walked_ = nullptr;
    long position_ = -1;
    // or else these instances, which may come in two runs,
    SdaiEntityInstance* const* next_ = nullptr;
    SdaiEntityInstance* const* end_ = nullptr;
    SdaiEntityInstance* const* late_ = nullptr;
    SdaiEntityInstance* const* lateEnd_ = nullptr;
    // if this is set, only those of them that are of the type and refer to it.
    const SdaiEntityInstance* target_ = nullptr;

    // The back references through the attribute, and through the one that follows, if any. The
    // users of a single target through one attribute are visited where those keep them; all others
    // are searched for in steps.
    const SdaiModel* model_ = nullptr;
    const SdaiName* type_ = nullptr;
    std::span<const SdaiEntityInstance* const> targets_;
    const void* relation_ = nullptr;
    const void* nextRelation_ = nullptr;
    Found between_;  // those that refer to the targets through the attribute that follows
    Found users_;
    Step step_ = Step::None;

    SdaiEntityInstance* current_ = nullptr;
};

#endif
