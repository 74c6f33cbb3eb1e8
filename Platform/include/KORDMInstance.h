// Document management: identities of database objects and the revision history of their families.
//
// The platform keeps a store of families; a family is the list of the identities of one object's
// revisions, oldest first. The host fills the store (KORDMStore), and KORDMInstance looks up
// revisions in it. Identities are equal if Caenv, Catab, Coid and Compid are equal. The store must
// not be written while other threads read it.

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
    // Takes the kind of the table ("KORCON"), the environment, the table and the two identifiers.
    // The last three arguments name parts of an object; they are ignored, since the platform
    // handles only whole objects.
    KORDMInstance(const KORDMMappingText& kind, const KORDMMappingText& caenv,
                  const KORDMMappingText& catab, double coid, double compid,
                  const double* part = nullptr, const char* partName = nullptr, int partKind = 0);

    // Returns 1 if this is a newer revision than `other`, else 0. Sets the diagnostic to 0 if both
    // belong to the same family and can be compared. The mode is reserved; pass 1.
    int IsNewerRevision(const KORDMInstance& other, int mode, int& diagnostic) const;

    // Fills the list with all revisions of the object, oldest first, and returns 0. If the identity
    // belongs to no family, returns 1 and leaves the list unchanged. The modes are reserved; pass
    // 0, 1, 0.
    int GetAllRevision(KORListValKORDMInstance& list, int mode1, int mode2, int mode3) const;

    bool operator==(const KORDMInstance& other) const {
        return hash_ == other.hash_ && coid_ == other.coid_ && compid_ == other.compid_ &&
               caenv_ == other.caenv_ && catab_ == other.catab_;
    }

    // A hash of the fields that equality compares.
    std::size_t Hash() const { return hash_; }

  private:
    KORDMMappingText caenv_;
    KORDMMappingText catab_;
    double coid_;
    double compid_;
    std::size_t hash_;
};

// A list of identities. A plain value; positions are numbered from 1. Copies share their members
// until one of them is modified, so that a long history is returned without copying it.
class KOR_API KORListValKORDMInstance {
  public:
    int Size() const { return shared_ != nullptr ? static_cast<int>(shared_->members.size()) : 0; }

    void Append(KORDMInstance instance);

    // Appends every member of another list, in its order.
    void Append(const KORListValKORDMInstance& list);

    // The position of the first equal member at or after `from`; 0 if there is none. A `from` below
    // 1 counts as 1. In a long list, members are found by their hashes.
    int Locate(const KORDMInstance& instance, int from) const;

    void RemoveAll() { shared_ = nullptr; }

    // The member at a position from 1 to Size().
    const KORDMInstance& operator[](int position) const {
        return shared_->members[static_cast<std::size_t>(position - 1)];
    }

  private:
    // In a long list, members are found by their hashes: members in the same bucket form a chain,
    // in order. Positions are numbered from 1; 0 ends a chain.
    struct Shared {
        struct Chain {
            std::uint32_t first = 0;
            std::uint32_t last = 0;
        };

        void Reserve(std::size_t count);
        void Append(KORDMInstance instance);  // capacity must have been reserved
        void Connect(std::uint32_t position);
        int Locate(const KORDMInstance& instance, int from) const;

        std::vector<KORDMInstance> members;
        std::vector<Chain> chains;        // their number is a power of two; none in a short list
        std::vector<std::uint32_t> next;  // for each member, the next in its chain
    };

    Shared& Own();  // the members, no longer shared

    std::shared_ptr<Shared> shared_;  // null for an empty list
};

class SdaiModel;

// The store of revision families, one per process.
class KOR_API KORDMStore {
  public:
    // Adds a family, oldest revision first. An identity that already belongs to a family stays
    // there; the others are added.
    static void AddFamily(const KORListValKORDMInstance& revisions);

    // Adds the families of a model: for each instance of `cdma_revision_history`, the identities of
    // the `cdma_id` instances in its list "Revisions". Returns the number of families added.
    static int AddFamilies(const SdaiModel& model);

    // Forgets every family.
    static void RemoveAll();
};

#endif
