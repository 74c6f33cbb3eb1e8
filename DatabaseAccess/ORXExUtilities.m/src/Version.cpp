// Versions of parts: which part is the revision directly after another, and which part represents a
// family of revisions.

#include <algorithm>
#include <cstddef>
#include <new>
#include <optional>
#include <vector>

#include "Attributes.h"
#include "Function.h"
#include "Identity.h"
#include "KORDMInstance.h"
#include "KORDMNarvo.h"

using namespace orx;
using namespace sdai_names;

namespace {

// The families that IsVersion has seen so far. Positions and families are numbered from 1: family k
// occupies positions ends[k - 1] + 1 to ends[k] of the revisions (with ends[0] = 0) and was first
// seen through the part representatives[k].
struct SeenFamilies {
    KORListValKORDMInstance revisions;                 // DMList
    std::vector<SdaiEntityInstance*> representatives;  // SdaiList
    std::vector<int> ends;                             // IndList

    void Add(const KORListValKORDMInstance& family, SdaiEntityInstance* part) {
        // If memory runs out, none of the three grows.
        MakeRoom(representatives);
        MakeRoom(ends);
        revisions.Append(family);
        representatives.push_back(part);
        ends.push_back(revisions.Size());
    }

    // Makes room for one more member, doubling the capacity.
    template <class Member>
    static void MakeRoom(std::vector<Member>& members) {
        if (members.size() == members.capacity()) members.reserve(2 * members.size() + 1);
    }

    // The first family that ends at or after a position.
    std::size_t FamilyAt(int position) const {
        return static_cast<std::size_t>(std::lower_bound(ends.begin(), ends.end(), position) -
                                        ends.begin() + 1);
    }
    int EndOf(std::size_t family) const { return ends[family - 1]; }
    SdaiEntityInstance* RepresentativeOf(std::size_t family) const {
        return representatives[family - 1];
    }
};

// Engines may still call functions while the process ends, so this object is never destroyed. It is
// emptied when the module is unloaded or the process ends, and later calls find it empty.
alignas(SeenFamilies) std::byte storage[sizeof(SeenFamilies)];
SeenFamilies& seen = *new (storage) SeenFamilies;

const struct Emptied {
    ~Emptied() { seen = SeenFamilies(); }
} emptied;

KORDMInstance Identity(const SdaiString& coid, const SdaiString& compid, const SdaiString& caenv,
                       const SdaiString& catab) {
    return {
        "KORCON", caenv,   catab, KORDMNarvo::HexaToDouble(coid), KORDMNarvo::HexaToDouble(compid),
        nullptr,  nullptr, 0};
}

// The identity that a `cdma_id` instance records for its part, which it also traces.
KORDMInstance IdentityIn(Trace& trace, const SdaiPrimitiveH& record) {
    const SdaiString coid = TextOf(record, "Coid"_name);
    const SdaiString compid = TextOf(record, "Compid"_name);
    const SdaiString caenv = TextOf(record, "Caenv"_name);
    const SdaiString catab = TextOf(record, "Catab"_name);
    trace.Line("    CAENV  = ", caenv);
    trace.Line("    CATAB  = ", catab);
    trace.Line("    COID   = ", coid);
    trace.Line("    COMPID = ", compid);
    return Identity(coid, compid, caenv, catab);
}

// The positions of two revisions in a list, and whether `newer` directly follows `older`.
struct Succession {
    Succession(const KORListValKORDMInstance& revisions, const KORDMInstance& older,
               const KORDMInstance& newer)
        : olderPosition(revisions.Locate(older, 1)),
          newerPosition(revisions.Locate(newer, olderPosition)) {}

    bool IsDirect() const { return newerPosition != 0 && newerPosition - olderPosition == 1; }

    int olderPosition;
    int newerPosition;
};

// The rough version of the test: searches the whole history from document management. No value if
// document management does not report A as newer than B.
std::optional<bool> FollowsInHistory(Trace& trace, const KORDMInstance& a, const KORDMInstance& b) {
    trace.Line(" >> Listes STATIQUES pas pretes : rough Version ");
    int diagnostic = 0;
    const int newer = a.IsNewerRevision(b, 1, diagnostic);
    trace.Line(" DIAGNOSTIC from KORDMINSTANCE comparison = ", diagnostic);
    if (diagnostic != 0 || newer != 1) return std::nullopt;
    trace.Line(" -> Affinage (comme le fromage)");
    trace.Line("    Retrouver toutes les versions");
    KORListValKORDMInstance revisions;
    if (a.GetAllRevision(revisions, 0, 1, 0) != 0) return std::nullopt;
    trace.Line("    -> OK .. taille: ", revisions.Size());
    const Succession succession(revisions, b, a);
    trace.Line("       pos1: ", succession.olderPosition, " - pos2: ", succession.newerPosition);
    return succession.IsDirect();
}

// The light version: searches the families seen so far. The last revision of a family and the first
// of the next are adjacent in the list, but do not follow each other.
bool FollowsInSeen(Trace& trace, const KORDMInstance& a, const KORDMInstance& b) {
    trace.Line(" >> Listes STATIQUES pretes : light Version");
    const Succession succession(seen.revisions, b, a);
    if (!succession.IsDirect()) return false;
    const std::size_t family = seen.FamilyAt(succession.olderPosition);
    return succession.newerPosition <= seen.EndOf(family);
}

}  // namespace

SdaiPrimitiveH IsNewer(const SdaiPrimitiveH& partA, const SdaiPrimitiveH& partB) {
    return Function<"IsNewer">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (!partA.exists() || !partB.exists()) {
            return trace.Line(" Valeur retournee : ", result);
        }
        trace.Line("the Parts exist");
        const SdaiEntityInstance* a = partA;
        const SdaiEntityInstance* b = partB;
        if (AreSame(a, b)) return trace.Line(" Entites identiques !! ");

        // A record of A scores 1 and a record of B scores 4, doubled when the identity is read from
        // it; both are found at 10. A further record of a part already found may lead past the
        // scores at which an identity is read.
        std::optional<KORDMInstance> identityA;
        std::optional<KORDMInstance> identityB;
        int score = 0;
        const SdaiEntityInstance* const parts[] = {a, b};
        SdaiIterator_Of_Users current = Candidates(trace, partA.FindEntityInstanceModel(),
                                                   "cdma_id"_name, "CdmaObject"_name, parts);
        while (current.Next()) {
            SdaiEntityInstance* record = current.GetCurrentMember();
            const SdaiEntityInstance* part = ReferredBy(record, "CdmaObject"_name);
            const bool isA = AreSame(part, a);
            const bool isB = AreSame(part, b);
            if (isA) score += 1;
            if (isB) score += 4;
            if (isA && (score == 1 || score == 9)) {
                trace.Line(" -> OUI sur #1 ");
                identityA = IdentityIn(trace, record);
                trace.Line("    ind= ", score);
                score += 1;
            }
            if (isB && (score == 4 || score == 6)) {
                trace.Line(" -> OUI sur #2 ");
                identityB = IdentityIn(trace, record);
                trace.Line("    ind= ", score);
                score += 4;
            }
            if (score == 10) break;
        }
        if (score != 10 || !identityA.has_value() || !identityB.has_value()) return;

        trace.Line(" Create the DM Instance #1");
        trace.Line(" Create the DM Instance #2");
        if (seen.revisions.Size() == 0) {
            const std::optional<bool> follows = FollowsInHistory(trace, *identityA, *identityB);
            if (!follows.has_value()) return;
            result = SdaiBoolean(*follows);
        } else {
            result = SdaiBoolean(FollowsInSeen(trace, *identityA, *identityB));
        }
        trace.Line(" Valeur retournee : ", result);
    });
}

namespace {

// Records the family of a part whose revision was not seen before. Returns false if document
// management does not know it.
bool SeeFamily(Trace& trace, const KORDMInstance& identity, SdaiEntityInstance* part) {
    KORListValKORDMInstance family;
    if (identity.GetAllRevision(family, 0, 1, 0) != 0) {
        trace.Line(" --> ERREUR : sortie <-- ");
        return false;
    }
    trace.Line("    Taille de Liste = ", family.Size());
    seen.Add(family, part);
    return true;
}

}  // namespace

SdaiPrimitiveH IsVersion(const SdaiPrimitiveH& part, const SdaiPrimitiveH& flag) {
    const bool wantsPart = static_cast<long>(flag) == 1;
    const SdaiPrimitiveH byDefault = wantsPart ? SdaiPrimitiveH() : SdaiPrimitiveH(sdaiLFALSE);
    return Function<"IsVersion">(byDefault, [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!part.exists() || !flag.exists()) return;
        trace.Line("the Part exists and the Flag exist");
        const long value = flag;
        if (value != 0 && value != 1) return;

        SdaiEntityInstance* sought = part;
        const SdaiEntityInstance* const parts[] = {sought};
        SdaiIterator_Of_Users current = Candidates(trace, part.FindEntityInstanceModel(),
                                                   "cdma_id"_name, "CdmaObject"_name, parts);
        // The loop continues after a match.
        while (current.Next()) {
            SdaiEntityInstance* record = current.GetCurrentMember();
            if (!AreSame(ReferredBy(record, "CdmaObject"_name), sought)) continue;
            trace.Line(" On a trouve la Part");
            const KORDMInstance identity = IdentityIn(trace, record);
            trace.Line(" Create the DM Instance ");
            trace.Line(" >> TAILLE DE LISTE : ", seen.revisions.Size(), " << ");
            if (seen.revisions.Size() == 0) {
                trace.Line("    Ma Liste est vide");
                trace.Line("    Retrouver toutes les versions");
                if (!SeeFamily(trace, identity, sought)) return;
                if (wantsPart) result = sought;
            } else if (const int position = seen.revisions.Locate(identity, 1); position == 0) {
                trace.Line("    Ma Liste n'est pas vide");
                trace.Line("    -> cette DM n'a pas ete traitee");
                if (!SeeFamily(trace, identity, sought)) return;
                if (wantsPart) result = sought;
            } else {
                trace.Line("    Ma Liste n'est pas vide");
                trace.Line("    -> cette DM a deja ete traitee : ", position);
                const std::size_t family = seen.FamilyAt(position);
                trace.Line("       index de la part : ", family);
                SdaiEntityInstance* representative = seen.RepresentativeOf(family);
                if (wantsPart) {
                    result = representative;
                } else {
                    result = !SdaiLogical(SdaiBoolean(AreSame(representative, sought)));
                }
            }
        }
    });
}

SdaiPrimitiveH RemoveValueVersion() {
    return Function<"RemoveValueVersion">(sdaiLTRUE, [&](Trace& trace, SdaiLogical&) {
        seen = SeenFamilies();
        trace.Line("Taille DMList : ", seen.revisions.Size());
        trace.Line("Taille SdaiList : ", seen.representatives.size());
        trace.Line("Taille IndList : ", seen.ends.size());
    });
}
