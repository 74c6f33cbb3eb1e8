#include <algorithm>
#include <bit>
#include <functional>
#include <unordered_map>

#include "KORDMInstance.h"
#include "KORDMNarvo.h"
#include "Lasting.h"
#include "SdaiIterator.h"
#include "SdaiModel.h"

namespace {

struct Member {
    std::size_t family;
    int position;  // from 1
};

struct IdentityHash {
    std::size_t operator()(const KORDMInstance& instance) const { return instance.Hash(); }
};

struct Store {
    std::vector<KORListValKORDMInstance> families;
    std::unordered_map<KORDMInstance, Member, IdentityHash> members;
    KORUnicodeString startValue = "A";

    const Member* Find(const KORDMInstance& instance) const {
        const auto found = members.find(instance);
        return found != members.end() ? &found->second : nullptr;
    }
};

// The identity that a `cdma_id` instance records.
KORDMInstance IdentityOf(const SdaiEntityInstance& record) {
    using namespace sdai_names;
    const auto text = [&record](const SdaiName& attribute) {
        return SdaiString(static_cast<const SdaiString&>(record.GetAttr(attribute)));
    };
    return {"KORCON", text("Caenv"_name), text("Catab"_name),
            KORDMNarvo::HexaToDouble(text("Coid"_name)),
            KORDMNarvo::HexaToDouble(text("Compid"_name))};
}

// Emptied, not destroyed, when the library is unloaded or the process ends.
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
    : caenv_(caenv), catab_(catab), coid_(coid), compid_(compid) {}

std::size_t KORDMInstance::Hash() const {
    std::size_t hash = 0;
    const auto mix = [&hash](std::size_t part) { hash = hash * 0x9E3779B97F4A7C15U + part; };
    mix(std::hash<std::string_view>{}(caenv_.View()));
    mix(std::hash<std::string_view>{}(catab_.View()));
    mix(std::hash<double>{}(coid_));
    mix(std::hash<double>{}(compid_));
    return hash;
}

int KORDMInstance::IsNewerRevision(const KORDMInstance& other, int, int& diagnostic) const {
    const Member* mine = TheStore().Find(*this);
    const Member* others = TheStore().Find(other);
    const bool comparable = mine != nullptr && others != nullptr && mine->family == others->family;
    diagnostic = comparable ? 0 : 1;
    return comparable && mine->position > others->position ? 1 : 0;
}

int KORDMInstance::GetAllRevision(KORListValKORDMInstance& list, int, int, int) const {
    const Member* mine = TheStore().Find(*this);
    if (mine == nullptr) return 1;
    list = TheStore().families[mine->family];
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

void KORListValKORDMInstance::Append(const KORDMInstance& instance) {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it may be a member.
    const KORDMInstance added = instance;
    Shared& own = Own();
    own.Reserve(own.members.size() + 1);
    own.Append(added);
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

// Whatever may fail for want of memory. Room grows by doubling.
void KORListValKORDMInstance::Shared::Reserve(std::size_t count) {
    constexpr std::size_t kFew = 16;  // which are searched as fast
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

void KORListValKORDMInstance::Shared::Append(const KORDMInstance& instance) {
    members.push_back(instance);
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
    KORListValKORDMInstance family;
    for (int i = 1; i <= revisions.Size(); ++i) {
        const Member member{store.families.size(), family.Size() + 1};
        if (store.members.emplace(revisions[i], member).second) family.Append(revisions[i]);
    }
    store.families.push_back(std::move(family));
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
    TheStore().members.clear();
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
