// Document management of the second platform: lists with linear search. The operations are
// documented in the contract's header.

#ifndef KORDMINSTANCE_H
#define KORDMINSTANCE_H

#include <cstddef>
#include <vector>

#include "KORDMMappingText.h"
#include "KORExport.h"

class KORListValKORDMInstance;

class KOR_API KORDMInstance {
  public:
    KORDMInstance(const KORDMMappingText& kind, const KORDMMappingText& caenv,
                  const KORDMMappingText& catab, double coid, double compid,
                  const double* part = nullptr, const char* partName = nullptr, int partKind = 0);

    int IsNewerRevision(const KORDMInstance& other, int mode, int& diagnostic) const;
    int GetAllRevision(KORListValKORDMInstance& list, int mode1, int mode2, int mode3) const;

    bool operator==(const KORDMInstance& other) const = default;
    std::size_t Hash() const;

  private:
    KORDMMappingText caenv_;
    KORDMMappingText catab_;
    double coid_;
    double compid_;
};

class KOR_API KORListValKORDMInstance {
  public:
    int Size() const { return static_cast<int>(members_.size()); }
    void Append(KORDMInstance instance);
    void Append(const KORListValKORDMInstance& list);
    int Locate(const KORDMInstance& instance, int from) const;
    void RemoveAll() { members_.clear(); }
    const KORDMInstance& operator[](int position) const {
        return members_[static_cast<std::size_t>(position - 1)];
    }

  private:
    std::vector<KORDMInstance> members_;
};

class SdaiModel;

class KOR_API KORDMStore {
  public:
    static void AddFamily(const KORListValKORDMInstance& revisions);
    static int AddFamilies(const SdaiModel& model);
    static void RemoveAll();
};

#endif
