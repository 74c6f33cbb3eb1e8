// Document management: identities, revision families and their store.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "KORDMInstance.h"
#include "KORDMNarvo.h"
#include "SdaiIterator.h"
#include "SdaiModel.h"
#include "services/Lasting.h"

namespace {

using Families = std::vector<KORListValKORDMInstance>;

// The place of an identity among the families.
struct Member {
    std::uint32_t family;
    std::uint32_t position;  // from 1; 0 of no member
};

// Finds identities in families: an open-addressed table of hashes, at most half full.
class MemberTable {
  public:
    Member Find(const KORDMInstance& instance, const Families& families) const {
        if (entries_.empty()) return {};
        const std::uint32_t hash = Shortened(instance.Hash());
        for (std::size_t place = hash & Mask();; place = (place + 1) & Mask()) {
            const Entry& entry = entries_[place];
            const auto position = static_cast<int>(entry.member.position);
            if (position == 0) return {};
            if (entry.hash == hash && families[entry.member.family][position] == instance) {
                return entry.member;
            }
        }
    }

    // Makes room for so many more.
    void Reserve(std::size_t more) {
        const std::size_t size = std::bit_ceil(2 * (count_ + more));
        if (size <= entries_.size()) return;
        std::vector<Entry> old(size);
        old.swap(entries_);
        for (const Entry& entry : old) {
            if (entry.member.position != 0) Put(entry);
        }
    }

    // Adds one that is not there and for which there is room.
    void Add(const KORDMInstance& instance, Member member) {
        Put({Shortened(instance.Hash()), member});
        ++count_;
    }

  private:
    struct Entry {
        std::uint32_t hash;
        Member member;
    };

    static std::uint32_t Shortened(std::size_t hash) {
        return static_cast<std::uint32_t>(hash ^ hash >> 32);
    }
    std::size_t Mask() const { return entries_.size() - 1; }
    void Put(const Entry& entry) {
        std::size_t place = entry.hash & Mask();
        while (entries_[place].member.position != 0) place = (place + 1) & Mask();
        entries_[place] = entry;
    }

    std::vector<Entry> entries_;  // a power of two of them
    std::size_t count_ = 0;
};

struct Store {
    Families families;
    MemberTable members;
    KORUnicodeString startValue = "A";

    Member Find(const KORDMInstance& instance) const { return members.Find(instance, families); }

    bool Knows(const KORDMInstance& instance) const { return Find(instance).position != 0; }

    // Those that no family has yet, each once.
    KORListValKORDMInstance NewOnes(const KORListValKORDMInstance& revisions) const {
        const auto isNew = [&](int i) {
            return !Knows(revisions[i]) && revisions.Locate(revisions[i], 1) == i;
        };
        int first = 1;
        while (first <= revisions.Size() && isNew(first)) ++first;
        if (first > revisions.Size()) return revisions;
        KORListValKORDMInstance added;
        for (int i = 1; i <= revisions.Size(); ++i) {
            if (isNew(i)) added.Append(revisions[i]);
        }
        return added;
    }
};

// The identity that a `cdma_id` instance records.
KORDMInstance IdentityOf(const SdaiEntityInstance& record) {
    using namespace sdai_names;
    const SdaiPrimitiveH caenv = record.GetAttr("Caenv"_name);
    const SdaiPrimitiveH catab = record.GetAttr("Catab"_name);
    const SdaiPrimitiveH coid = record.GetAttr("Coid"_name);
    const SdaiPrimitiveH compid = record.GetAttr("Compid"_name);
    const auto text = [](const SdaiPrimitiveH& value) -> const KORUnicodeString& {
        return TextOf(value);
    };
    return {"KORCON", text(caenv), text(catab), KORDMNarvo::HexaToDouble(text(coid)),
            KORDMNarvo::HexaToDouble(text(compid))};
}

// Emptied rather than destroyed when the library is unloaded or the process ends.
Store& TheStore() {
    static Store& store = kor::Lasting<Store>();
    static const struct Emptied {
        ~Emptied() { kor::Lasting<Store>() = Store(); }
    } emptied;
    return store;
}

}  // namespace

// ---- Identities

KORDMInstance::KORDMInstance(const KORDMMappingText&, const KORDMMappingText& caenv,
                             const KORDMMappingText& catab, double coid, double compid,
                             const double*, const char*, int)
    : caenv_(caenv), catab_(catab), coid_(coid), compid_(compid), hash_(0) {
    const auto mix = [this](std::size_t part) { hash_ = hash_ * 0x9E3779B97F4A7C15U + part; };
    mix(std::hash<std::string_view>{}(caenv_.View()));
    mix(std::hash<std::string_view>{}(catab_.View()));
    mix(std::hash<double>{}(coid_));
    mix(std::hash<double>{}(compid_));
}

int KORDMInstance::IsNewerRevision(const KORDMInstance& other, int, int& diagnostic) const {
    const Member mine = TheStore().Find(*this);
    const Member others = TheStore().Find(other);
    const bool comparable =
        mine.position != 0 && others.position != 0 && mine.family == others.family;
    diagnostic = comparable ? 0 : 1;
    return comparable && mine.position > others.position ? 1 : 0;
}

int KORDMInstance::GetAllRevision(KORListValKORDMInstance& list, int, int, int) const {
    const Member mine = TheStore().Find(*this);
    if (mine.position == 0) return 1;
    list = TheStore().families[mine.family];
    return 0;
}

// ---- Lists

KORListValKORDMInstance::Shared& KORListValKORDMInstance::Own() {
    if (shared_ == nullptr) {
        shared_ = std::make_shared<Shared>();
    } else if (shared_.use_count() > 1) {
        shared_ = std::make_shared<Shared>(*shared_);
    }
    return *shared_;
}

void KORListValKORDMInstance::Append(KORDMInstance instance) {
    Shared& own = Own();
    own.Reserve(own.members.size() + 1);
    own.Append(std::move(instance));
}

void KORListValKORDMInstance::Append(const KORListValKORDMInstance& list) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it may be this list.
    const KORListValKORDMInstance added = list;
    Shared& own = Own();
    own.Reserve(own.members.size() + static_cast<std::size_t>(added.Size()));
    for (int i = 1; i <= added.Size(); ++i) own.Append(added[i]);
}

int KORListValKORDMInstance::Locate(const KORDMInstance& instance, int from) const {
    return shared_ != nullptr ? shared_->Locate(instance, std::max(from, 1)) : 0;
}

// Makes all allocations that may fail. The capacity grows by doubling.
void KORListValKORDMInstance::Shared::Reserve(std::size_t count) {
    constexpr std::size_t kFew = 16;  // searched linearly just as fast
    const auto reserve = [count](auto& vector) {
        if (count > vector.capacity()) vector.reserve(std::max(count, 2 * vector.capacity()));
    };
    reserve(members);
    if (count <= kFew) return;
    reserve(next);
    if (count <= chains.size()) return;
    chains.assign(std::bit_ceil(2 * count), {});
    next.clear();
    for (std::uint32_t position = 1; position <= members.size(); ++position) Connect(position);
}

void KORListValKORDMInstance::Shared::Append(KORDMInstance instance) {
    members.push_back(std::move(instance));
    if (!chains.empty()) Connect(static_cast<std::uint32_t>(members.size()));
}

void KORListValKORDMInstance::Shared::Connect(std::uint32_t position) {
    next.push_back(0);
    Chain& chain = chains[members[position - 1].Hash() & (chains.size() - 1)];
    (chain.first == 0 ? chain.first : next[chain.last - 1]) = position;
    chain.last = position;
}

int KORListValKORDMInstance::Shared::Locate(const KORDMInstance& instance, int from) const {
    const auto least = static_cast<std::size_t>(from);
    if (chains.empty()) {
        for (std::size_t position = least; position <= members.size(); ++position) {
            if (members[position - 1] == instance) return static_cast<int>(position);
        }
        return 0;
    }
    std::uint32_t position = chains[instance.Hash() & (chains.size() - 1)].first;
    while (position != 0 && (position < least || !(members[position - 1] == instance))) {
        position = next[position - 1];
    }
    return static_cast<int>(position);
}

// ---- The store

void KORDMStore::AddFamily(const KORListValKORDMInstance& revisions) {
    Store& store = TheStore();
    KORListValKORDMInstance family = store.NewOnes(revisions);
    const auto count = static_cast<std::uint32_t>(family.Size());
    store.members.Reserve(count);
    store.families.push_back(std::move(family));
    const auto number = static_cast<std::uint32_t>(store.families.size() - 1);
    for (std::uint32_t position = 1; position <= count; ++position) {
        store.members.Add(store.families.back()[static_cast<int>(position)], {number, position});
    }
}

int KORDMStore::AddFamilies(const SdaiModel& model) {
    using namespace sdai_names;
    int count = 0;
    SdaiIterator_Of_SdaiEntityInstanceH families(
        model.GetEntityExtent("cdma_revision_history"_name));
    while (families.Next()) {
        KORListValKORDMInstance revisions;
        const SdaiPrimitiveH list = families.GetCurrentMember()->GetAttr("Revisions"_name);
        SdaiIterator_Of_SdaiEntityInstanceH records(static_cast<SdaiAggrInstance*>(list));
        while (records.Next()) {
            if (const SdaiEntityInstance* record = records.GetCurrentMember()) {
                revisions.Append(IdentityOf(*record));
            }
        }
        if (revisions.Size() == 0) continue;
        AddFamily(revisions);
        ++count;
    }
    return count;
}

void KORDMStore::RemoveAll() {
    TheStore().families.clear();
    TheStore().members = {};
}

// ---- Identifiers and revision values

double KORDMNarvo::HexaToDouble(const KORUnicodeString& text) {
    double value = 0.0;
    for (const char c : text.View()) {
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0) return 0.0;
        value = 16.0 * value + digit;
    }
    return value;
}

KORUnicodeString KORDMNarvo::GetRevVerStartValue(int selector, const KORDMMappingText&,
                                                 const KORDMMappingText&, const KORDMMappingText&,
                                                 int* status) {
    if (status != nullptr) *status = 0;
    return selector == 1 ? TheStore().startValue : KORUnicodeString();
}

void KORDMNarvo::SetRevVerStartValue(const KORUnicodeString& value) {
    TheStore().startValue = value;
}
