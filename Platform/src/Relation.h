// Back references: which instances of a model refer to which through the attributes of one name.
//
// A relation is made when it is first asked for and kept right by every write from then on, each in
// amortised constant time. It may be asked by any number of threads while no thread writes the
// model.

#ifndef KOR_RELATION_H
#define KOR_RELATION_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "Cell.h"
#include "PointerTable.h"

class SdaiEntityInstance;

namespace kor {

class Instance;
class Model;
struct ModelType;

class Relation {
  public:
    explicit Relation(std::string foldedAttribute) : attribute_(std::move(foldedAttribute)) {}
    ~Relation() { Clear(); }
    Relation(const Relation&) = delete;
    Relation& operator=(const Relation&) = delete;

    const std::string& Attribute() const { return attribute_; }

    // The instance that a value refers to, directly or as the value of a select; null for none.
    static SdaiEntityInstance* TargetOf(const Cell& cell) {
        if (cell.GetTag() == Tag::Instance) return cell.Get<SdaiEntityInstance*>();
        return cell.GetTag() == Tag::Typed ? TargetOfTyped(cell) : nullptr;
    }

    // What the attribute of an instance refers to.
    SdaiEntityInstance* TargetOf(const SdaiEntityInstance& source) const;

    // Makes it anew of what the model holds. Without memory the relation is lost.
    void Fill(const Model& model) noexcept;

    // Makes the instances of a type that the model has met known, whose attribute stands in that
    // slot.
    void AddType(const ModelType& type, int slot);

    // An instance refers to `target` from now on, no longer to `before`; either may be null. Its
    // own value has changed already. Without memory the relation is lost.
    void Change(const SdaiEntityInstance* before, const SdaiEntityInstance* target,
                SdaiEntityInstance& source) noexcept;

    // Whether it has been given up for want of memory.
    bool IsLost() const { return lost_; }

    // The instances that have referred to `target` lately, in the order of their creation: those
    // that still do and perhaps others, whose TargetOf is another. To be used until the next write.
    std::span<SdaiEntityInstance* const> SourcesOf(const SdaiEntityInstance* target) const;

  private:
    // Several sources of one target. The first `ordered` stand in the order of their creation, each
    // once; those behind them are put in order when they are asked for.
    struct List {
        std::vector<SdaiEntityInstance*> members;
        std::size_t ordered = 0;
        std::size_t left = 0;  // members that refer to something else by now
        std::atomic<bool> inOrder{true};

        void Add(SdaiEntityInstance* source);
        void PutInOrder();
    };

    // The sources of a target: none, one, or a list, which is marked by the lowest bit.
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

    void Add(const SdaiEntityInstance* target, SdaiEntityInstance& source);
    void Remove(const SdaiEntityInstance* target);
    void Clear();
    void Lose();

    const std::string attribute_;
    std::vector<int> slots_;  // by the number of the type in the model
    PointerTable<Sources> targets_;
    mutable std::mutex orderMutex_;  // held while a list is put in order
    bool lost_ = false;
};

}  // namespace kor

#endif
