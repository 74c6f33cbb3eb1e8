// Document management: identities of database objects and the revision history of their families.
//
// The platform keeps a store of families; each is the identities of one object's revisions, oldest
// first. The host fills it (KORDMStore); identities ask it. Equality of identities is equality of
// Caenv, Catab, Coid and Compid. The store may not be written while other threads ask it.

#ifndef KORDMINSTANCE_H
#define KORDMINSTANCE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "KORDMMappingText.h"
#include "KORExport.h"

class KORListValKORDMInstance;

// The identity of a revision of a database object. A plain value.
class KOR_API KORDMInstance {
  public:
    // From the kind of the table ("KORCON"), the environment, the table and the two identifiers.
    // The last three arguments name parts of an object; the platform knows whole objects only and
    // ignores them.
    KORDMInstance(const KORDMMappingText& kind, const KORDMMappingText& caenv,
                  const KORDMMappingText& catab, double coid, double compid,
                  const double* part = nullptr, const char* partName = nullptr, int partKind = 0);

    // 1 when this is a newer revision than `other`, else 0. The diagnostic is 0 when both belong to
    // one family, so that the comparison could be made. The mode is reserved; pass 1.
    int IsNewerRevision(const KORDMInstance& other, int mode, int& diagnostic) const;

    // Fills the list with all revisions of the object, oldest first, and gives 0; for an identity
    // of no family gives 1 and leaves the list as it is. The modes are reserved; pass 0, 1, 0.
    int GetAllRevision(KORListValKORDMInstance& list, int mode1, int mode2, int mode3) const;

    bool operator==(const KORDMInstance& other) const {
        return hash_ == other.hash_ && coid_ == other.coid_ && compid_ == other.compid_ &&
               caenv_ == other.caenv_ && catab_ == other.catab_;
    }

    // A hash of what equality compares.
    std::size_t Hash() const { return hash_; }

  private:
    KORDMMappingText caenv_;
    KORDMMappingText catab_;
    double coid_;
    double compid_;
    std::size_t hash_;
};

// A list of identities. A plain value; positions count from 1. Copies share their members until one
// of them is written, so that a long history is handed out without copying it.
class KOR_API KORListValKORDMInstance {
  public:
    int Size() const { return shared_ != nullptr ? static_cast<int>(shared_->members.size()) : 0; }

    void Append(KORDMInstance instance);

    // Appends every member of another list, in its order.
    void Append(const KORListValKORDMInstance& list);

    // The position of the first equal member at or after `from`; 0 when there is none. A `from`
    // below 1 counts as 1. A long list is not searched: members are
    // found by their hashes.
    int Locate(const KORDMInstance& instance, int from) const;

    void RemoveAll() { shared_ = nullptr; }

    // The member at a position from 1 to Size().
    const KORDMInstance& operator[](int position) const {
        return shared_->members[static_cast<std::size_t>(position - 1)];
    }

  private:
    // Many members are found by their hashes: those that share a place in the table of hashes form
    // a chain, in their order. Positions count from 1; 0 ends a chain.
    struct Shared {
        struct Chain {
            std::uint32_t first = 0;
            std::uint32_t last = 0;
        };

        void Reserve(std::size_t count);
        void Append(KORDMInstance instance);  // for which there is room
        void Connect(std::uint32_t position);
        int Locate(const KORDMInstance& instance, int from) const;

        std::vector<KORDMInstance> members;
        std::vector<Chain> chains;        // a power of two of them; none where members are few
        std::vector<std::uint32_t> next;  // the next in the chain of each member
    };

    Shared& Own();  // the members, no longer shared

    std::shared_ptr<Shared> shared_;  // null for an empty list
};

class SdaiModel;

// The store of revision families, one for the process.
class KOR_API KORDMStore {
  public:
    // Adds a family, oldest revision first. An identity that a family has already stays in that
    // family; the others are added.
    static void AddFamily(const KORListValKORDMInstance& revisions);

    // Adds the families of a model: for each instance of `cdma_revision_history`, the identities of
    // the `cdma_id` instances in its list "Revisions". Gives the number of families added.
    static int AddFamilies(const SdaiModel& model);

    // Forgets every family.
    static void RemoveAll();
};

#endif
