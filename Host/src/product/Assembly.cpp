// The product structure of a data set.

#include "product/Assembly.h"

#include <algorithm>
#include <utility>

#include "KORMath.h"
#include "SdaiIterator.h"

namespace host {

using namespace sdai_names;

namespace {

std::string Utf8Of(const SdaiPrimitiveH& value) { return TextOf(value).ToUtf8(); }

// Groups the occurrences of each part, in the order of the first occurrence, and counts them.
void Group(std::vector<Occurrence>& occurrences) {
    std::unordered_map<const Part*, std::size_t> ranks;
    for (const Occurrence& occurrence : occurrences) {
        ranks.emplace(occurrence.part, ranks.size());
    }
    std::stable_sort(occurrences.begin(), occurrences.end(),
                     [&](const Occurrence& a, const Occurrence& b) {
                         return ranks.at(a.part) < ranks.at(b.part);
                     });
}

}  // namespace

Assembly::Assembly(const kor::Model& model)
    : isDatabase_(model.GetSchema().FindEntity("part_object"_name) != nullptr) {
    if (isDatabase_) {
        ReadDatabase(model);
    } else {
        ReadExchangeData(model);
    }
    for (Part& part : parts_) Group(part.occurrences);
    FindRoots();
}

const Part* Assembly::Find(const SdaiEntityInstance* instance) const {
    const auto found = partNumbers_.find(instance);
    return found != partNumbers_.end() ? &parts_[found->second] : nullptr;
}

void Assembly::ReadExchangeData(const kor::Model& model) {
    SdaiIterator_Of_SdaiEntityInstanceH definitions(model.Extent("PRODUCT_DEFINITION"_name));
    while (definitions.Next()) AddPart(definitions.GetCurrentMember());
    SdaiIterator_Of_SdaiEntityInstanceH links(model.Extent("NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name));
    while (links.Next()) {
        SdaiEntityInstance* link = links.GetCurrentMember();
        AddOccurrence(link, link->GetAttr("RELATING_PRODUCT_DEFINITION"_name),
                      link->GetAttr("RELATED_PRODUCT_DEFINITION"_name));
    }
}

void Assembly::ReadDatabase(const kor::Model& model) {
    SdaiIterator_Of_SdaiEntityInstanceH parts(model.Extent("part_object"_name));
    while (parts.Next()) AddPart(parts.GetCurrentMember());
    parts.Beginning();
    while (parts.Next()) {
        const SdaiPrimitiveH owned = parts.GetCurrentMember()->GetAttr("KORASS"_name);
        SdaiIterator_Of_SdaiEntityInstanceH links(owned);
        while (links.Next()) {
            SdaiEntityInstance* link = links.GetCurrentMember();
            const SdaiPrimitiveH component = SdaiPrimitiveH(link).GetAttr("ref"_name);
            AddOccurrence(link, parts.GetCurrentMember(), component);
        }
    }
}

void Assembly::AddPart(SdaiEntityInstance* instance) {
    const SdaiPrimitiveH part(instance);
    const SdaiPrimitiveH product = part.GetAttr("FORMATION"_name).GetAttr("OF_PRODUCT"_name);
    std::string id =
        Utf8Of(isDatabase_ ? part.GetAttr("S_PART_NUMBER"_name) : product.GetAttr("ID"_name));
    std::string name =
        Utf8Of(isDatabase_ ? part.GetAttr("S_DESC"_name) : product.GetAttr("NAME"_name));
    if (name.empty()) name = id;
    if (name.empty()) name = '#' + std::to_string(instance->GetInstanceNameId());
    partNumbers_.emplace(instance, parts_.size());
    parts_.push_back({instance, std::move(id), std::move(name), {}});
}

// A link without one of its ends is ignored.
void Assembly::AddOccurrence(SdaiEntityInstance* link, const SdaiEntityInstance* parent,
                             const SdaiEntityInstance* component) {
    const auto owner = partNumbers_.find(parent);
    const auto used = partNumbers_.find(component);
    if (owner == partNumbers_.end() || used == partNumbers_.end()) return;
    Part& part = parts_[used->second];
    part.isUsed = true;
    parts_[owner->second].occurrences.push_back({link, &part});
    ++linkCount_;
}

void Assembly::FindRoots() {
    std::vector<bool> reached(parts_.size());
    const auto numberOf = [&](const Part* part) {
        return static_cast<std::size_t>(part - parts_.data());
    };
    const auto addRoot = [&](const Part& root) {
        roots_.push_back(&root);
        std::vector<const Part*> waiting{&root};
        reached[numberOf(&root)] = true;
        while (!waiting.empty()) {
            const Part& part = *waiting.back();
            waiting.pop_back();
            for (const Occurrence& occurrence : part.occurrences) {
                if (reached[numberOf(occurrence.part)]) continue;
                reached[numberOf(occurrence.part)] = true;
                waiting.push_back(occurrence.part);
            }
        }
    };
    for (const Part& part : parts_) {
        if (!part.isUsed) addRoot(part);
    }
    for (const Part& part : parts_) {
        if (!reached[numberOf(&part)]) addRoot(part);
    }
}

bool Assembly::StartAt(const std::string& name) {
    std::vector<const Part*> named;
    for (const Part& part : parts_) {
        const std::string instance = '#' + std::to_string(part.instance->GetInstanceNameId());
        if (part.id == name || part.name == name || instance == name) named.push_back(&part);
    }
    if (named.empty()) return false;
    roots_ = std::move(named);
    return true;
}

std::optional<std::vector<Assembly::Total>> Assembly::Totals(const Part& whole) const {
    // How often the parts that are reached are used by others of them.
    std::unordered_map<const Part*, std::size_t> uses{{&whole, 0}};
    std::vector<const Part*> waiting{&whole};
    while (!waiting.empty()) {
        const Part& part = *waiting.back();
        waiting.pop_back();
        for (const Occurrence& occurrence : part.occurrences) {
            const auto [use, isNew] = uses.emplace(occurrence.part, 0);
            ++use->second;
            if (isNew) waiting.push_back(occurrence.part);
        }
    }
    // A part's total is complete when all its uses have been counted.
    std::unordered_map<const Part*, double> counts{{&whole, 1}};
    std::vector<Total> totals;
    if (uses[&whole] == 0) waiting.push_back(&whole);
    while (!waiting.empty()) {
        const Part& part = *waiting.back();
        waiting.pop_back();
        const double count = counts[&part];
        if (&part != &whole) totals.push_back({&part, count});
        for (const Occurrence& occurrence : part.occurrences) {
            counts[occurrence.part] += count;
            if (--uses[occurrence.part] == 0) waiting.push_back(occurrence.part);
        }
    }
    if (totals.size() + 1 < uses.size() || !waiting.empty() || uses[&whole] != 0) {
        return std::nullopt;
    }
    std::sort(totals.begin(), totals.end(),
              [](const Total& a, const Total& b) { return a.part < b.part; });
    return totals;
}

void Assembly::Walk(std::size_t depth, bool single,
                    const std::function<bool(const Node&)>& visit) const {
    // A part on the path from the root, and its occurrences still to be visited.
    struct Step {
        const Part* part;
        std::span<const Occurrence> rest;
    };
    std::vector<Step> way;
    std::vector<bool> isOnWay(parts_.size());
    const auto mark = [&](const Part* part, bool on) {
        isOnWay[static_cast<std::size_t>(part - parts_.data())] = on;
    };
    // Visits a place and descends into it if there is something below.
    const auto enter = [&](Node node) {
        const bool hasComponents = !node.part->occurrences.empty();
        node.isCycle = isOnWay[static_cast<std::size_t>(node.part - parts_.data())];
        node.isCut = !node.isCycle && hasComponents && node.level >= depth;
        if (!visit(node)) return false;
        if (hasComponents && !node.isCycle && !node.isCut) {
            way.push_back({node.part, node.part->occurrences});
            mark(node.part, true);
        }
        return true;
    };
    for (const Part* root : roots_) {
        if (!enter({root, nullptr, {}, 0, root == roots_.back()})) return;
        while (!way.empty()) {
            Step& step = way.back();
            if (step.rest.empty()) {
                mark(step.part, false);
                way.pop_back();
                continue;
            }
            std::size_t count = 1;
            while (!single && count < step.rest.size() &&
                   step.rest[count].part == step.rest[0].part) {
                ++count;
            }
            const std::span<const Occurrence> occurrences = step.rest.first(count);
            step.rest = step.rest.subspan(count);
            if (!enter(
                    {occurrences[0].part, step.part, occurrences, way.size(), step.rest.empty()})) {
                return;
            }
        }
    }
}

std::optional<double> Assembly::CountPlaces(std::size_t depth, bool single) const {
    if (parts_.empty()) return 0;
    const auto numberOf = [this](const Part* part) {
        return static_cast<std::size_t>(part - parts_.data());
    };
    // Components before the parts that contain them.
    std::vector<std::size_t> order;
    std::vector<std::size_t> uses(parts_.size());  // by parts that are not in the order yet
    for (const Part& part : parts_) {
        for (const Occurrence& occurrence : part.occurrences) ++uses[numberOf(occurrence.part)];
    }
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        if (uses[i] == 0) order.push_back(i);
    }
    for (std::size_t done = 0; done < order.size(); ++done) {
        for (const Occurrence& occurrence : parts_[order[done]].occurrences) {
            const std::size_t used = numberOf(occurrence.part);
            if (--uses[used] == 0) order.push_back(used);
        }
    }
    if (order.size() < parts_.size()) return std::nullopt;
    std::reverse(order.begin(), order.end());

    // The number of places of a part: its own and those of its components.
    std::vector<double> places(parts_.size(), 1);
    const auto count = [&](const Part& part, const std::vector<double>& ofComponents) {
        double sum = 1;
        for (std::size_t i = 0; i < part.occurrences.size(); ++i) {
            const Part* component = part.occurrences[i].part;
            const bool isNew = i == 0 || component != part.occurrences[i - 1].part;
            if (single || isNew) sum += ofComponents[numberOf(component)];
        }
        return sum;
    };
    std::vector<std::size_t> levels(parts_.size());  // below a part
    for (const std::size_t i : order) {
        for (const Occurrence& occurrence : parts_[i].occurrences) {
            levels[i] = std::max(levels[i], levels[numberOf(occurrence.part)] + 1);
        }
        places[i] = count(parts_[i], places);
    }
    const std::size_t most = *std::max_element(levels.begin(), levels.end());
    if (most > depth) {
        // Level by level, up to the depth.
        std::fill(places.begin(), places.end(), 1.0);
        for (std::size_t level = 0; level < depth; ++level) {
            const std::vector<double> before = places;
            for (const std::size_t i : order) places[i] = count(parts_[i], before);
        }
    }
    double sum = 0;
    for (const Part* root : roots_) sum += places[numberOf(root)];
    return sum;
}

std::size_t Assembly::DeepestLevel(std::size_t most, std::size_t deepest, bool single) const {
    const auto fits = [&](std::size_t depth) {
        const std::optional<double> places = CountPlaces(depth, single);
        return !places || *places <= static_cast<double>(most);
    };
    if (fits(deepest)) return deepest;
    // What fits down to a level fits down to every level above it.
    std::size_t shallow = 1;
    while (deepest - shallow > 1) {
        const std::size_t between = (shallow + deepest) / 2;
        (fits(between) ? shallow : deepest) = between;
    }
    return shallow;
}

// ---- Placements

namespace {

// As for an AXIS2_PLACEMENT_3D; degenerate directions give values that are not finite.
orx::Placement PlacementOfLink(const SdaiEntityInstance& link) {
    const KORMathVector origin = orx::VectorOf(link.GetAttr("origin"_name), {0, 0, 0});
    const KORMathVector z = orx::Normalised(orx::VectorOf(link.GetAttr("axis"_name), {0, 0, 1}));
    const KORMath3x3Matrix frame = orx::FrameOf(
        z, orx::VectorOf(link.GetAttr("ref_direction"_name), orx::DefaultReference(z)));
    // Adding 0.0 turns -0.0 into 0.0.
    const auto positive = [](const KORMathVector& v) -> KORMathVector {
        return {v[0] + 0.0, v[1] + 0.0, v[2] + 0.0};
    };
    return {{positive(frame.GetFirstColumn()), positive(frame.GetSecondColumn()),
             positive(frame.GetThirdColumn())},
            positive(origin)};
}

}  // namespace

std::string NameOf(const Occurrence& occurrence) {
    const SdaiPrimitiveH link(occurrence.link);
    const std::string name = Utf8Of(link.GetAttr("NAME"_name));
    return name.empty() ? Utf8Of(link.GetAttr("ID"_name)) : name;
}

orx::Placement PlacementOf(const Occurrence& occurrence, const Assembly& assembly,
                           const calls::Module& module) {
    if (assembly.IsDatabase()) return PlacementOfLink(*occurrence.link);
    const SdaiPrimitiveH list = module.Call("GetAbsPlacement", {occurrence.link});
    const SdaiAggrInstance* values = list;
    if (values == nullptr || values->GetMemberCount() != 12) return orx::kIdentity;
    return {{orx::VectorAt(*values, 0), orx::VectorAt(*values, 3), orx::VectorAt(*values, 6)},
            orx::VectorAt(*values, 9)};
}

}  // namespace host
