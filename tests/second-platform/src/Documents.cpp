// Document management.

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>

#include "KORDMInstance.h"
#include "KORDMNarvo.h"
#include "SdaiIterator.h"
#include "SdaiModel.h"

namespace {

// The families registered by the host. They may be requested until the process ends.
std::vector<KORListValKORDMInstance>& Families() {
    static auto& families = *new std::vector<KORListValKORDMInstance>;
    return families;
}

const KORListValKORDMInstance* FamilyOf(const KORDMInstance& instance) {
    for (const KORListValKORDMInstance& family : Families()) {
        if (family.Locate(instance, 1) != 0) return &family;
    }
    return nullptr;
}

KORUnicodeString& StartValue() {
    static auto& value = *new KORUnicodeString("A");
    return value;
}

}  // namespace

KORDMInstance::KORDMInstance(const KORDMMappingText&, const KORDMMappingText& caenv,
                             const KORDMMappingText& catab, double coid, double compid,
                             const double*, const char*, int)
    : caenv_(caenv), catab_(catab), coid_(coid), compid_(compid) {}

std::size_t KORDMInstance::Hash() const {
    const std::string fields = std::string(caenv_.View()) + '\0' + std::string(catab_.View());
    return std::hash<std::string>()(fields) ^ std::hash<double>()(coid_) ^
           3 * std::hash<double>()(compid_);
}

int KORDMInstance::IsNewerRevision(const KORDMInstance& other, int, int& diagnostic) const {
    const KORListValKORDMInstance* family = FamilyOf(*this);
    const bool comparable = family != nullptr && family == FamilyOf(other);
    diagnostic = comparable ? 0 : 1;
    return comparable && family->Locate(*this, 1) > family->Locate(other, 1) ? 1 : 0;
}

int KORDMInstance::GetAllRevision(KORListValKORDMInstance& list, int, int, int) const {
    const KORListValKORDMInstance* family = FamilyOf(*this);
    if (family == nullptr) return 1;
    list = *family;
    return 0;
}

void KORListValKORDMInstance::Append(KORDMInstance instance) { members_.push_back(instance); }

void KORListValKORDMInstance::Append(const KORListValKORDMInstance& list) {
    const KORListValKORDMInstance added = list;  // in case it is this list
    for (int i = 1; i <= added.Size(); ++i) Append(added[i]);
}

int KORListValKORDMInstance::Locate(const KORDMInstance& instance, int from) const {
    for (int position = std::max(from, 1); position <= Size(); ++position) {
        if ((*this)[position] == instance) return position;
    }
    return 0;
}

void KORDMStore::AddFamily(const KORListValKORDMInstance& revisions) {
    KORListValKORDMInstance family;
    for (int i = 1; i <= revisions.Size(); ++i) {
        const bool known = FamilyOf(revisions[i]) != nullptr || family.Locate(revisions[i], 1) != 0;
        if (!known) family.Append(revisions[i]);
    }
    Families().push_back(family);
}

int KORDMStore::AddFamilies(const SdaiModel& model) {
    int count = 0;
    SdaiIterator_Of_SdaiEntityInstanceH history(model.GetEntityExtent("cdma_revision_history"));
    while (history.Next()) {
        KORListValKORDMInstance family;
        const SdaiPrimitiveH records = history.GetCurrentMember()->GetAttr("Revisions");
        SdaiIterator_Of_SdaiEntityInstanceH record(static_cast<SdaiAggrInstance*>(records));
        while (record.Next()) {
            const SdaiPrimitiveH id = record.GetCurrentMember();
            if (!id.exists()) continue;
            const auto text = [&id](const char* name) {
                return static_cast<const SdaiString&>(id.GetAttr(name));
            };
            family.Append(KORDMInstance("KORCON", text("Caenv"), text("Catab"),
                                        KORDMNarvo::HexaToDouble(text("Coid")),
                                        KORDMNarvo::HexaToDouble(text("Compid"))));
        }
        if (family.Size() == 0) continue;
        AddFamily(family);
        ++count;
    }
    return count;
}

void KORDMStore::RemoveAll() { Families().clear(); }

double KORDMNarvo::HexaToDouble(const KORUnicodeString& text) {
    const std::string digits(text.View());
    const bool good =
        !digits.empty() && digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return good ? std::strtod(("0x" + digits).c_str(), nullptr) : 0.0;
}

KORUnicodeString KORDMNarvo::GetRevVerStartValue(int selector, const KORDMMappingText&,
                                                 const KORDMMappingText&, const KORDMMappingText&,
                                                 int* status) {
    if (status != nullptr) *status = 0;
    return selector == 1 ? StartValue() : KORUnicodeString();
}

void KORDMNarvo::SetRevVerStartValue(const KORUnicodeString& value) { StartValue() = value; }
