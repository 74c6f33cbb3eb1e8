// The product structure of a data set: parts, and their occurrences in other parts.
//
// Exchange data: the PRODUCT_DEFINITIONs connected by NEXT_ASSEMBLY_USAGE_OCCURRENCEs. Database:
// part_objects connected by their links (KORASS).

#ifndef HOST_ASSEMBLY_H
#define HOST_ASSEMBLY_H

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "Module.h"
#include "model/Model.h"
#include "src/Placement.h"

namespace host {

struct Part;

// A use of a part in another.
struct Occurrence {
    SdaiEntityInstance* link;
    const Part* part;
};

struct Part {
    SdaiEntityInstance* instance;
    std::string id;                       // as in the data, in UTF-8
    std::string name;                     // the id, or "#12", if the data have no name
    std::vector<Occurrence> occurrences;  // the components of the part, in the order of the data
    bool isUsed = false;                  // by another part
};

// A place in the tree.
struct Node {
    const Part* part;
    const Part* parent;  // null for a root
    std::span<const Occurrence>
        occurrences;    // of the part in its parent, represented by this place
    std::size_t level;  // 0 for a root
    bool isLast;        // among the places under its parent
    // The reason why nothing is shown below: the part contains itself, in damaged data, or the
    // depth limit is reached.
    bool isCycle = false;
    bool isCut = false;
};

// Valid as long as its model; not copyable, since nodes and occurrences point into it.
class Assembly {
  public:
    explicit Assembly(const kor::Model& model);
    Assembly(const Assembly&) = delete;
    Assembly& operator=(const Assembly&) = delete;

    bool IsDatabase() const { return isDatabase_; }
    // In the order of the data.
    const std::vector<Part>& Parts() const { return parts_; }
    // The parts that no other part uses; of a cycle of parts, the first one.
    const std::vector<const Part*>& Roots() const { return roots_; }
    std::size_t LinkCount() const { return linkCount_; }

    // Walks begin with the parts of that id, name or instance (#12) from now on, instead of the
    // roots. False, and nothing changes, if there is none.
    bool StartAt(const std::string& name);

    // The part for an instance (a part_object or PRODUCT_DEFINITION); null for any other instance.
    const Part* Find(const SdaiEntityInstance* instance) const;

    // Walks the tree from every root down, visiting each part before its components, as long as
    // visit returns true. Several occurrences of one part in another are a single place, or one
    // place each (`single`). Shared subassemblies are visited wherever they occur.
    void Walk(std::size_t depth, bool single, const std::function<bool(const Node&)>& visit) const;

    // The number of places that Walk would visit; no value if a part contains itself, which only
    // Walk can resolve.
    std::optional<double> CountPlaces(std::size_t depth, bool single) const;

    // The deepest level, at least 1 and at most `deepest`, down to which Walk visits at most `most`
    // places; `deepest` if a part contains itself.
    std::size_t DeepestLevel(std::size_t most, std::size_t deepest, bool single) const;

    // What a part consists of over all levels, in the order of the data, each with how many of it
    // there are in one of the part; no value if a part contains itself.
    struct Total {
        const Part* part;
        double count;
    };
    std::optional<std::vector<Total>> Totals(const Part& whole) const;

  private:
    std::size_t NumberOf(const Part* part) const {
        return static_cast<std::size_t>(part - parts_.data());
    }
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

// The placement of a component in its parent: the result of GetAbsPlacement for exchange data; for
// the database, that of the link's origin, axis and ref_direction.
orx::Placement PlacementOf(const Occurrence& occurrence, const Assembly& assembly,
                           const calls::Module& module);

// What the data call an occurrence: the name or the id of its link, as UTF-8.
std::string NameOf(const Occurrence& occurrence);

}  // namespace host

#endif
