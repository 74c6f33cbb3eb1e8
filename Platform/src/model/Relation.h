// Back references: which instances of a model refer to an instance through the attributes of one
// name.
//
// A relation is created on first use and updated by every write from then on, in amortised constant
// time. Any number of threads may read it while no thread writes the model.

#ifndef KOR_RELATION_H
#define KOR_RELATION_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "model/ArenaTable.h"
#include "model/Cell.h"
#include "model/NameTable.h"

class SdaiEntityInstance;

namespace kor {

class Instance;
class Model;
struct ModelType;

// Two runs of sources, each in the order of creation and without duplicates, visited as one.
struct SourceWalk {
    SdaiEntityInstance* const* next = nullptr;
    SdaiEntityInstance* const* end = nullptr;
    SdaiEntityInstance* const* late = nullptr;
    SdaiEntityInstance* const* lateEnd = nullptr;

    // At most that many follow.
    std::size_t Size() const { return static_cast<std::size_t>((end - next) + (lateEnd - late)); }

    // Takes the next source, each once; null at the end.
    SdaiEntityInstance* Take() {
        if (late == lateEnd) return next != end ? *next++ : nullptr;
        return TakeOfBoth();
    }

  private:
    SdaiEntityInstance* TakeOfBoth();
};

class Relation {
  public:
    explicit Relation(std::string foldedAttribute) : attribute_(std::move(foldedAttribute)) {}
    ~Relation() { Clear(); }
    Relation(const Relation&) = delete;
    Relation& operator=(const Relation&) = delete;

    const std::string& Attribute() const { return attribute_; }

    // The instance that a value refers to, directly or as the value of a select; null if there is
    // none.
    static SdaiEntityInstance* TargetOf(const Cell& cell) {
        if (cell.GetTag() == Tag::Instance) return cell.Get<SdaiEntityInstance*>();
        return cell.GetTag() == Tag::Typed ? TargetOfTyped(cell) : nullptr;
    }

    // The instance that the attribute of an instance refers to.
    SdaiEntityInstance* TargetOf(const SdaiEntityInstance& source) const;

    // Rebuilds the relation from the model. If memory runs out, the relation is lost.
    void Fill(const Model& model) noexcept;

    // Adds the instances of a type of the model that stores the attribute in that slot.
    void AddType(const ModelType& type, std::size_t slot);

    // Records that an instance now refers to `target` instead of `before`; either may be null. Its
    // value has already changed. If memory runs out, the relation is lost.
    void Change(const SdaiEntityInstance* before, const SdaiEntityInstance* target,
                SdaiEntityInstance& source) noexcept;

    // Whether the relation was lost because memory ran out.
    bool IsLost() const { return lost_; }

    // The instances that refer to `target`, in the order of creation, and possibly some that no
    // longer do; check IsSource. Valid until the next write.
    SourceWalk SourcesOf(const SdaiEntityInstance* target) const;
    // Fetches from memory what SourcesOf reads.
    [[gnu::always_inline]] void FetchSourcesOf(const SdaiEntityInstance* target) const {
        targets_.Fetch(target);
    }

    // Whether what SourcesOf gave for `target` still refers to it. Reads the instance only once one
    // has left a target that others refer to.
    bool IsSource(const SdaiEntityInstance& source, const SdaiEntityInstance* target) const {
        return !anyLeft_ || TargetOf(source) == target;
    }

  private:
    // Several sources of one target, in the order of creation. Those that come to refer to it after
    // one created later are kept apart, so that each takes its place without moving all others;
    // once they are many, they join them.
    struct List {
        std::vector<SdaiEntityInstance*> members;  // in order
        std::vector<SdaiEntityInstance*> late;     // the first `ordered` in order
        std::size_t ordered = 0;
        std::size_t left = 0;  // sources that now refer to another instance
        std::atomic<bool> inOrder{true};

        std::size_t Size() const { return members.size() + late.size(); }
        void Add(SdaiEntityInstance* source);
        void PutInOrder();
        void Join();
    };

    // The sources of a target: none, one, or a list, marked by the lowest bit.
    struct Sources {
        SdaiEntityInstance* one = nullptr;

        bool IsList() const { return (reinterpret_cast<std::uintptr_t>(one) & 1) != 0; }
        List* AsList() const {
            return reinterpret_cast<List*>(reinterpret_cast<std::uintptr_t>(one) &
                                           ~std::uintptr_t{1});
        }
        void SetList(List* list) {
            one = reinterpret_cast<SdaiEntityInstance*>(reinterpret_cast<std::uintptr_t>(list) | 1);
        }
    };

    static SdaiEntityInstance* TargetOfTyped(const Cell& cell);

    Sources& SourcesFor(const SdaiEntityInstance& target, const SdaiEntityInstance& source);
    void Add(const SdaiEntityInstance* target, SdaiEntityInstance& source);
    void Remove(const SdaiEntityInstance* target);
    void Clear();
    void Lose();

    const std::string attribute_;
    std::vector<Index> slots_;  // by the index of the type in the model
    ArenaTable<Sources> targets_;
    mutable std::mutex orderMutex_;  // held while a list is sorted
    bool lost_ = false;
    bool anyLeft_ = false;
    // Not if some were of other models when the relation was filled: those may be gone.
    bool mayReadTargets_ = true;
};

}  // namespace kor

#endif
