// The product structure of a data set: parts, and their occurrences in other parts.
//
// Exchange data: the PRODUCT_DEFINITIONs over NEXT_ASSEMBLY_USAGE_OCCURRENCE. Database side: the
// part_objects over their links (KORASS).

#ifndef HOST_ASSEMBLY_H
#define HOST_ASSEMBLY_H

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "Model.h"
#include "Module.h"

namespace host {

struct Part;

// A use of a part in another.
struct Occurrence {
    SdaiEntityInstance* link;
    const Part* part;
};

struct Part {
    SdaiEntityInstance* instance;
    std::string id;                       // as the data have them: UTF-8
    std::string name;                     // the id, or "#12", where the data name nothing
    std::vector<Occurrence> occurrences;  // what the part consists of, in the order of the data
    bool isUsed = false;                  // in another part
};

// A place in the tree.
struct Node {
    const Part* part;
    const Part* parent;  // null for a root
    std::span<const Occurrence>
        occurrences;    // of the part in its parent that this place stands for
    std::size_t level;  // 0 for a root
    bool isLast;        // of the places under its parent
    // Why nothing is shown below: the part is one of those that it consists of, in damaged data; or
    // the depth is reached.
    bool isCycle = false;
    bool isCut = false;
};

// Valid as long as its model is, and not copied: nodes and occurrences point into it.
class Assembly {
  public:
    explicit Assembly(const kor::Model& model);
    Assembly(const Assembly&) = delete;
    Assembly& operator=(const Assembly&) = delete;

    bool IsDatabase() const { return isDatabase_; }
    // In the order of the data.
    const std::vector<Part>& Parts() const { return parts_; }
    // Those that no other uses; of parts that use each other in a circle, the first one.
    const std::vector<const Part*>& Roots() const { return roots_; }
    std::size_t LinkCount() const { return linkCount_; }

    // The part that an instance is (a part_object, PRODUCT_DEFINITION); null for any other.
    const Part* Find(const SdaiEntityInstance* instance) const;

    // Walks the tree from every root downwards, each part before what it consists of, as long as
    // visit gives true. Several occurrences of one part in another are one place, or one each
    // (`single`). Shared sub-assemblies are walked wherever they occur.
    void Walk(std::size_t depth, bool single, const std::function<bool(const Node&)>& visit) const;

    // The number of places that Walk would visit, however many; none where parts consist of
    // themselves, which Walk alone finds out.
    std::optional<double> CountPlaces(std::size_t depth, bool single) const;

  private:
    void AddPart(SdaiEntityInstance* instance);
    void ReadExchangeData(const kor::Model& model);
    void ReadDatabase(const kor::Model& model);
    void AddOccurrence(SdaiEntityInstance* link, const SdaiEntityInstance* parent,
                       const SdaiEntityInstance* component);
    void FindRoots();

    bool isDatabase_;
    std::vector<Part> parts_;
    std::unordered_map<const SdaiEntityInstance*, std::size_t> partNumbers_;
    std::vector<const Part*> roots_;
    std::size_t linkCount_ = 0;
};

// ---- Placements

// Twelve reals: the three columns of a rotation, then a translation.
using Placement = std::array<double, 12>;

constexpr Placement kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

// The placement of a component in its parent: what GetAbsPlacement gives for exchange data; for the
// database side that of the link's origin, axis and ref_direction.
Placement PlacementOf(const Occurrence& occurrence, const Assembly& assembly,
                      const calls::Module& module);

// The placement in the outer frame of what is placed by `inner` in a frame that is placed by
// `outer`.
Placement Compose(const Placement& outer, const Placement& inner);

}  // namespace host

#endif
