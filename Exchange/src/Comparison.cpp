// The comparison of two data sets: pairs of instances by content, then attribute by attribute.

#include "Comparison.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ExchangeText.h"
#include "model/Aggregate.h"

namespace exchange {

namespace {

using kor::Cell;
using kor::Domain;
using kor::Instance;
using kor::Tag;

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

// ---- Hashes

// The finaliser of splitmix64: every bit of the argument reaches every bit of the result.
std::uint64_t Mixed(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    return value ^ (value >> 31);
}
std::uint64_t Mixed(std::uint64_t first, std::uint64_t second) {
    return Mixed(Mixed(first) + second);
}
std::uint64_t HashOf(std::string_view text) { return std::hash<std::string_view>{}(text); }

// ---- Values

const Domain* ElementOf(const Domain* domain) {
    return domain != nullptr && domain->base == kor::Base::Aggregate ? domain->element : nullptr;
}
bool IsOrdered(const Domain* domain) {
    return domain == nullptr || domain->base != kor::Base::Aggregate || domain->form.IsOrdered();
}

// "*" equals "$": whether an attribute is derived depends only on the schema.
bool IsUnset(const Cell& cell) { return cell.GetTag() <= Tag::Derived; }

std::span<const Cell> Members(const Cell& aggregate, std::vector<Cell>& room) {
    const SdaiAggrInstance& members = *aggregate.Get<SdaiAggrInstance*>();
    room.resize(kor::AggregateAccess::Count(members));
    for (std::size_t i = 0; i < room.size(); ++i) {
        room[i] = kor::AggregateAccess::MemberCell(members, i);
    }
    return room;
}

// A cell without instances or nested values, in the notation of exchange files.
std::string PlainText(const Cell& cell) {
    std::string text;
    switch (cell.GetTag()) {
        case Tag::Integer: AppendInteger(text, cell.Get<long>()); break;
        case Tag::Real: AppendReal(text, cell.Get<double>()); break;
        case Tag::Logical:
        case Tag::Boolean: AppendLogical(text, cell.Get<SdaiLogical>()); break;
        case Tag::Text: text = '\'' + cell.SharedText().ToUtf8() + '\''; break;
        case Tag::Enumeration: AppendEnumeration(text, cell.Text()); break;
        case Tag::Binary: AppendBinary(text, cell.Text()); break;
        default: text += '$';
    }
    return text;
}

std::uint64_t PlainHash(const Cell& cell) {
    const auto tag = static_cast<std::uint64_t>(cell.GetTag());
    switch (cell.GetTag()) {
        case Tag::Integer: return Mixed(tag, static_cast<std::uint64_t>(cell.Get<long>()));
        case Tag::Real: return Mixed(tag, std::bit_cast<std::uint64_t>(cell.Get<double>()));
        case Tag::Text:
            return Mixed(tag,
                         cell.IsWide() ? HashOf(cell.SharedText().ToUtf8()) : HashOf(cell.Text()));
        default: return HashOf(PlainText(cell));
    }
}

// Calls visit(value, path) for each plain value, reference and aggregate in a value. The path is
// its position; the members of a set or bag share one path.
template <class Visit>
void WalkValue(const Cell& cell, const Domain* domain, std::uint64_t path, Visit visit) {
    if (IsUnset(cell)) return;
    if (cell.GetTag() == Tag::Typed) {
        const kor::TypedValue& typed = *cell.Get<kor::TypedValue*>();
        const Domain* choice =
            domain == nullptr ? nullptr : domain->Choice(typed.definedType.View());
        WalkValue(typed.cell, choice, Mixed(path, HashOf(typed.definedType.View())), visit);
        return;
    }
    visit(cell, path);
    if (cell.GetTag() != Tag::Aggregate) return;
    std::vector<Cell> room;
    std::uint64_t position = 0;
    for (const Cell& member : Members(cell, room)) {
        if (IsOrdered(domain)) ++position;
        WalkValue(member, ElementOf(domain), Mixed(path, position + 1), visit);
    }
}

// ---- One data set

// A reference from one instance to another.
struct Reference {
    std::uint64_t path;
    std::uint32_t other;
};

// The references of all instances in one array.
class References {
  public:
    // The edges as (instance, path, other).
    struct Edge {
        std::uint32_t from;
        std::uint64_t path;
        std::uint32_t to;
    };

    References(std::size_t instances, const std::vector<Edge>& edges) : starts_(instances + 1, 0) {
        for (const Edge& edge : edges) ++starts_[edge.from + 1];
        for (std::size_t i = 0; i < instances; ++i) starts_[i + 1] += starts_[i];
        references_.resize(edges.size());
        std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
        for (const Edge& edge : edges) references_[next[edge.from]++] = {edge.path, edge.to};
    }
    std::span<const Reference> Of(std::uint32_t instance) const {
        return std::span(references_)
            .subspan(starts_[instance], starts_[instance + 1] - starts_[instance]);
    }

  private:
    std::vector<std::size_t> starts_;
    std::vector<Reference> references_;
};

using Edges = std::vector<References::Edge>;

// The attributes of an entity type by their names in upper case, in alphabetical order. Those of an
// undeclared type are identified by position.
struct NamedSlot {
    std::string folded;
    std::string name;
    std::size_t slot;
    const Domain* domain;
    std::uint64_t path;
};
using NamedSlots = std::vector<NamedSlot>;

NamedSlots SlotsOf(const kor::EntityType& type) {
    NamedSlots slots;
    for (std::size_t i = 0; i < type.Slots().size(); ++i) {
        const kor::Slot& slot = type.Slots()[i];
        const std::string name = slot.attribute == nullptr
                                     ? '[' + std::to_string(i + 1) + ']'
                                     : std::string(slot.attribute->Name().View());
        std::string folded = kor::Folded(name);
        const std::uint64_t path = HashOf(folded);
        slots.push_back({std::move(folded), name, i, slot.domain, path});
    }
    std::stable_sort(slots.begin(), slots.end(),
                     [](const NamedSlot& a, const NamedSlot& b) { return a.folded < b.folded; });
    return slots;
}

// The instances of a data set, numbered in the order of creation, with the data that is compared.
class Side {
  public:
    explicit Side(const kor::Model& model) {
        instances.reserve(model.InstanceCount());
        numbers_.reserve(model.InstanceCount());
        model.ForEachInstance([this](const Instance& instance) {
            numbers_.emplace(&instance, static_cast<std::uint32_t>(instances.size()));
            instances.push_back(&instance);
        });
        Edges forward;
        for (std::uint32_t i = 0; i < instances.size(); ++i) local.push_back(Local(i, forward));
        Edges backward;
        backward.reserve(forward.size());
        for (const References::Edge& edge : forward) {
            backward.push_back({edge.to, edge.path, edge.from});
        }
        references.emplace(instances.size(), forward);
        users.emplace(instances.size(), backward);
        partner.assign(instances.size(), kNone);
    }

    std::size_t Count() const { return instances.size(); }
    // kNone for an instance of another model.
    std::uint32_t NumberOf(const Cell& reference) const {
        const auto found = numbers_.find(reference.Get<SdaiEntityInstance*>());
        return found == numbers_.end() ? kNone : found->second;
    }
    const kor::EntityType& TypeOf(std::uint32_t number) const {
        return *instances[number]->Type().entity;
    }
    const NamedSlots& Slots(std::uint32_t number) {
        const auto [place, isNew] = slots_.try_emplace(&TypeOf(number));
        if (isNew) place->second = SlotsOf(TypeOf(number));
        return place->second;
    }
    Cell Value(std::uint32_t number, const NamedSlot& slot) const {
        return instances[number]->Values()[slot.slot];
    }

    std::vector<const Instance*> instances;
    std::vector<std::uint64_t> types;    // by instance: a hash of the name of its type
    std::vector<std::uint64_t> local;    // by instance: a hash of its type and its plain values
    std::vector<std::uint64_t> colour;   // by instance: a hash of its content, as far as examined
    std::vector<std::uint32_t> partner;  // by instance: the other data set's, or kNone
    std::optional<References> references;
    std::optional<References> users;

  private:
    std::uint64_t Local(std::uint32_t number, Edges& edges) {
        const std::uint64_t type = HashOf(TypeOf(number).FoldedName());
        types.push_back(type);
        std::uint64_t sum = 0;
        for (const NamedSlot& slot : Slots(number)) {
            WalkValue(Value(number, slot), slot.domain, slot.path,
                      [&](const Cell& cell, std::uint64_t path) {
                          if (cell.GetTag() == Tag::Instance) {
                              const std::uint32_t target = NumberOf(cell);
                              if (target != kNone) edges.push_back({number, path, target});
                          } else if (cell.GetTag() == Tag::Aggregate) {
                              sum += Mixed(path, kor::AggregateAccess::Count(
                                                     *cell.Get<SdaiAggrInstance*>()));
                          } else {
                              sum += Mixed(path, PlainHash(cell));
                          }
                      });
        }
        return Mixed(type, sum);
    }

    std::unordered_map<const SdaiEntityInstance*, std::uint32_t> numbers_;
    std::unordered_map<const kor::EntityType*, NamedSlots> slots_;
};

// ---- What an instance is known by

// The attributes that identify an instance better than its own texts: what it belongs to, or what
// it connects.
struct LabelRule {
    const char* entity;
    const char* first;
    const char* second = nullptr;
};
constexpr LabelRule kLabelRules[] = {
    {"PART_LINK", "PARENT", "REF"},
    {"CDMA_ID", "CDMAOBJECT"},
    {"PRODUCT_DEFINITION_FORMATION", "OF_PRODUCT"},
    {"PRODUCT_DEFINITION", "FORMATION"},
    {"PRODUCT_DEFINITION_RELATIONSHIP", "RELATING_PRODUCT_DEFINITION",
     "RELATED_PRODUCT_DEFINITION"},
    {"SHAPE_REPRESENTATION_RELATIONSHIP", "REP_2", "REP_1"},
};
constexpr int kDeepestLabel = 8;

// The first non-empty text of an instance; empty if there is none.
std::string FirstText(const Instance& instance) {
    for (const Cell& cell : instance.Values()) {
        if (cell.GetTag() != Tag::Text) continue;
        const KORUnicodeString text = cell.SharedText();
        if (text.GetLengthInChar() != 0) return text.ToUtf8();
    }
    return {};
}

std::string LabelOf(const Instance& instance, int depth = 0) {
    const auto follow = [&](const char* attribute) {
        const kor::Index slot = instance.SlotOf(std::string_view(attribute));
        if (!slot) return std::string();
        const Cell& cell = instance.Cells()[*slot];
        if (cell.GetTag() != Tag::Instance || depth == kDeepestLabel) return std::string();
        return LabelOf(Instance::Of(*cell.Get<SdaiEntityInstance*>()), depth + 1);
    };
    for (const LabelRule& rule : kLabelRules) {
        if (!instance.Type().entity->IsKindOf(std::string_view(rule.entity))) continue;
        std::string label = follow(rule.first);
        if (label.empty()) break;
        if (rule.second != nullptr) label += " → " + follow(rule.second);
        return label;
    }
    const std::string text = FirstText(instance);
    return text.empty() ? '#' + std::to_string(instance.Id()) : text;
}

// ---- Pairs

// Pairs the instances of two data sets.
class Matcher {
  public:
    Matcher(Side& left, Side& right) : left_(left), right_(right) {}

    void Run() {
        // The further a colour looks, the more certain the pair; but a change alters the colours of
        // everything that leads to it, so colours that look less far are tried next.
        constexpr int kRounds[] = {24, 8, 4, 2, 1, 0};
        std::vector<std::pair<std::vector<std::uint64_t>, std::vector<std::uint64_t>>> colours;
        left_.colour = left_.local;
        right_.colour = right_.local;
        int round = 0;
        for (auto wanted = std::rbegin(kRounds); wanted != std::rend(kRounds); ++wanted) {
            for (; round < *wanted; ++round) {
                Refine(left_);
                Refine(right_);
            }
            colours.emplace_back(left_.colour, right_.colour);
        }
        for (auto sight = colours.rbegin(); sight != colours.rend(); ++sight) {
            Use(*sight);
            PairGroups(left_.colour, right_.colour, Groups::Single);
        }
        Use(colours.back());
        FindTexts();
        PairGroups(texts_[0], texts_[1], Groups::Single);
        PairReferences();
        // Remaining instances of equal content differ only in what refers to them; pairs that share
        // a neighbour stay together.
        for (auto sight = colours.rbegin(); sight != colours.rend(); ++sight) {
            Use(*sight);
            PairGroups(left_.colour, right_.colour, Groups::InOrder);
        }
        PairReferences();
        PairGroups(texts_[0], texts_[1], Groups::InOrder);
        PairGroups(left_.types, right_.types, Groups::OfOneSize);
        PairReferences();
    }

  private:
    enum class Groups { Single, OfOneSize, InOrder };

    // Extends each colour by one reference.
    static void Refine(Side& side) {
        std::vector<std::uint64_t> next(side.Count());
        for (std::uint32_t i = 0; i < side.Count(); ++i) {
            std::uint64_t sum = 0;
            for (const Reference& reference : side.references->Of(i)) {
                sum += Mixed(reference.path, side.colour[reference.other]);
            }
            next[i] = Mixed(side.local[i], sum);
        }
        side.colour = std::move(next);
    }

    void Use(const std::pair<std::vector<std::uint64_t>, std::vector<std::uint64_t>>& colours) {
        left_.colour = colours.first;
        right_.colour = colours.second;
    }

    // The unpaired instances in the order of a key, and of creation under one key.
    static std::vector<std::uint32_t> Open(const Side& side,
                                           const std::vector<std::uint64_t>& keys) {
        std::vector<std::uint32_t> open;
        for (std::uint32_t i = 0; i < side.Count(); ++i) {
            if (side.partner[i] == kNone && keys[i] != 0) open.push_back(i);
        }
        std::stable_sort(open.begin(), open.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
        return open;
    }

    // Pairs the unpaired instances that have the same key, in order: if both sides have one, or
    // equally many, or any number. A key of 0 is no key.
    void PairGroups(const std::vector<std::uint64_t>& leftKeys,
                    const std::vector<std::uint64_t>& rightKeys, Groups groups) {
        const std::vector<std::uint32_t> left = Open(left_, leftKeys);
        const std::vector<std::uint32_t> right = Open(right_, rightKeys);
        auto l = left.begin();
        auto r = right.begin();
        while (l != left.end() && r != right.end()) {
            const std::uint64_t leftKey = leftKeys[*l];
            const std::uint64_t rightKey = rightKeys[*r];
            const auto lEnd = std::find_if(l, left.end(),
                                           [&](std::uint32_t i) { return leftKeys[i] != leftKey; });
            const auto rEnd = std::find_if(
                r, right.end(), [&](std::uint32_t i) { return rightKeys[i] != rightKey; });
            if (leftKey < rightKey) {
                l = lEnd;
                continue;
            }
            if (rightKey < leftKey) {
                r = rEnd;
                continue;
            }
            if (groups == Groups::InOrder ||
                (lEnd - l == rEnd - r && (groups == Groups::OfOneSize || lEnd - l == 1))) {
                PairInOrder({l, lEnd}, {r, rEnd});
            }
            l = lEnd;
            r = rEnd;
        }
    }

    void PairInOrder(std::span<const std::uint32_t> left, std::span<const std::uint32_t> right) {
        auto r = right.begin();
        for (const std::uint32_t l : left) {
            if (left_.partner[l] != kNone) continue;
            while (r != right.end() && right_.partner[*r] != kNone) ++r;
            if (r == right.end()) return;
            if (left_.types[l] == right_.types[*r]) Pair(l, *r);
        }
    }

    // Computes the keys that find instances of one type with the same first text.
    void FindTexts() {
        const auto keys = [](const Side& side) {
            std::vector<std::uint64_t> texts(side.Count(), 0);
            for (std::uint32_t i = 0; i < side.Count(); ++i) {
                const std::string text = FirstText(*side.instances[i]);
                if (!text.empty()) texts[i] = Mixed(side.types[i], HashOf(text));
            }
            return texts;
        };
        texts_ = {keys(left_), keys(right_)};
    }

    // Pairs the instances that paired instances refer to in the same place, whatever their content.
    void PairReferences() {
        anyContent_ = true;
        for (std::uint32_t l = 0; l < left_.Count(); ++l) {
            if (left_.partner[l] != kNone) Spread({{l, left_.partner[l]}});
        }
        anyContent_ = false;
    }

    using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

    void Pair(std::uint32_t left, std::uint32_t right) {
        left_.partner[left] = right;
        right_.partner[right] = left;
        Spread({{left, right}});
    }

    // Pairs the instances that paired instances refer to, and those that refer to them, where the
    // pair is certain, and continues from there.
    void Spread(Pairs open) {
        const auto pair = [&](std::uint32_t l, std::uint32_t r) {
            left_.partner[l] = r;
            right_.partner[r] = l;
            open.emplace_back(l, r);
        };
        while (!open.empty()) {
            const auto [l, r] = open.back();
            open.pop_back();
            PairAlong(left_.references->Of(l), right_.references->Of(r), anyContent_, pair);
            PairAlong(left_.users->Of(l), right_.users->Of(r), false, pair);
        }
    }

    // Pairs the other ends of references with the same path: those with the same content, and those
    // of any content if each side has only one of the type.
    template <class PairThem>
    void PairAlong(std::span<const Reference> left, std::span<const Reference> right,
                   bool anyContent, PairThem pair) {
        const std::vector<Reference> l = OpenSorted(left_, left);
        const std::vector<Reference> r = OpenSorted(right_, right);
        if (l.empty() || r.empty()) return;
        const auto key = [](const Side& side, const Reference& reference) {
            return std::pair(reference.path, side.colour[reference.other]);
        };
        for (std::size_t i = 0, j = 0; i < l.size() && j < r.size();) {
            const auto leftKey = key(left_, l[i]);
            const auto rightKey = key(right_, r[j]);
            if (leftKey < rightKey) {
                ++i;
            } else if (rightKey < leftKey) {
                ++j;
            } else {
                // One instance may be referred to in several places.
                if (IsOpen(l[i].other, r[j].other)) pair(l[i].other, r[j].other);
                ++i;
                ++j;
            }
        }
        if (!anyContent) return;
        for (std::size_t i = 0, j = 0; i < l.size() && j < r.size();) {
            if (left_.partner[l[i].other] != kNone || l[i].path < r[j].path) {
                ++i;
            } else if (right_.partner[r[j].other] != kNone || r[j].path < l[i].path) {
                ++j;
            } else {
                if (IsOpen(l[i].other, r[j].other)) pair(l[i].other, r[j].other);
                ++i;
                ++j;
            }
        }
    }

    bool IsOpen(std::uint32_t left, std::uint32_t right) const {
        return left_.partner[left] == kNone && right_.partner[right] == kNone &&
               left_.types[left] == right_.types[right];
    }

    static std::vector<Reference> OpenSorted(const Side& side,
                                             std::span<const Reference> references) {
        std::vector<Reference> open;
        for (const Reference& reference : references) {
            if (side.partner[reference.other] == kNone) open.push_back(reference);
        }
        std::stable_sort(open.begin(), open.end(), [&](const Reference& a, const Reference& b) {
            return std::pair(a.path, side.colour[a.other]) <
                   std::pair(b.path, side.colour[b.other]);
        });
        return open;
    }

    Side& left_;
    Side& right_;
    std::array<std::vector<std::uint64_t>, 2> texts_;
    bool anyContent_ = false;  // pair what paired instances refer to, whatever its content
};

// ---- Differences

class Comparer {
  public:
    Comparer(Side& left, Side& right, double tolerance,
             const std::function<void(const Difference&)>& tell)
        : left_(left), right_(right), tolerance_(tolerance), tell_(tell) {}

    std::uint64_t Run() {
        for (std::uint32_t l = 0; l < left_.Count(); ++l) {
            if (left_.partner[l] == kNone) {
                TellMissing(left_, l, true);
            } else {
                Compare(l, left_.partner[l]);
            }
        }
        for (std::uint32_t r = 0; r < right_.Count(); ++r) {
            if (right_.partner[r] == kNone) TellMissing(right_, r, false);
        }
        return count_;
    }

  private:
    static constexpr std::size_t kLongestValue = 200;  // of a difference, in bytes

    void Compare(std::uint32_t l, std::uint32_t r) {
        const NamedSlots& left = left_.Slots(l);
        const NamedSlots& right = right_.Slots(r);
        auto i = left.begin();
        auto j = right.begin();
        while (i != left.end() || j != right.end()) {
            const bool hasLeft = i != left.end() && (j == right.end() || i->folded <= j->folded);
            const bool hasRight = j != right.end() && (i == left.end() || j->folded <= i->folded);
            const NamedSlot& slot = hasLeft ? *i : *j;
            const Cell a = hasLeft ? left_.Value(l, *i++) : Cell();
            const Cell b = hasRight ? right_.Value(r, *j++) : Cell();
            if (Equal(a, b, slot.domain)) continue;
            Tell({std::string(left_.TypeOf(l).Name().View()), LabelOf(*left_.instances[l]),
                  slot.name, Shown(left_, a), Shown(right_, b)});
        }
    }

    void TellMissing(const Side& side, std::uint32_t number, bool isLeft) {
        const Instance& instance = *side.instances[number];
        const std::string name = '#' + std::to_string(instance.Id());
        Tell({std::string(side.TypeOf(number).Name().View()), LabelOf(instance), "",
              isLeft ? name : "", isLeft ? "" : name});
    }

    void Tell(const Difference& difference) {
        ++count_;
        tell_(difference);
    }

    bool Equal(const Cell& a, const Cell& b, const Domain* domain) const {
        if (IsUnset(a) || IsUnset(b)) return IsUnset(a) && IsUnset(b);
        if (a.GetTag() != b.GetTag()) return false;
        switch (a.GetTag()) {
            case Tag::Real: return EqualReals(a.Get<double>(), b.Get<double>());
            case Tag::Integer: return a.Get<long>() == b.Get<long>();
            case Tag::Text: return a.SharedText() == b.SharedText();
            case Tag::Instance: {
                const std::uint32_t l = left_.NumberOf(a);
                const std::uint32_t r = right_.NumberOf(b);
                return l != kNone && r != kNone && left_.partner[l] == r;
            }
            case Tag::Typed: return EqualTyped(a, b, domain);
            case Tag::Aggregate: return EqualAggregates(a, b, domain);
            default: return PlainText(a) == PlainText(b);
        }
    }

    bool EqualReals(double a, double b) const {
        if (std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b)) return true;
        if (std::isnan(a) && std::isnan(b)) return true;
        return tolerance_ > 0 && std::abs(a - b) <= tolerance_;
    }

    bool EqualTyped(const Cell& a, const Cell& b, const Domain* domain) const {
        const kor::TypedValue& left = *a.Get<kor::TypedValue*>();
        const kor::TypedValue& right = *b.Get<kor::TypedValue*>();
        if (!kor::MatchesFolded(left.definedType.View(), kor::Folded(right.definedType.View()))) {
            return false;
        }
        const Domain* choice =
            domain == nullptr ? nullptr : domain->Choice(left.definedType.View());
        return Equal(left.cell, right.cell, choice);
    }

    bool EqualAggregates(const Cell& a, const Cell& b, const Domain* domain) const {
        std::vector<Cell> leftRoom;
        std::vector<Cell> rightRoom;
        const std::span<const Cell> left = Members(a, leftRoom);
        const std::span<const Cell> right = Members(b, rightRoom);
        if (left.size() != right.size()) return false;
        const Domain* element = ElementOf(domain);
        const auto equal = [&](const Cell& l, const Cell& r) { return Equal(l, r, element); };
        if (std::equal(left.begin(), left.end(), right.begin(), equal)) return true;
        if (IsOrdered(domain)) return false;
        if (const auto both = InstanceNumbers(left, right)) return both->first == both->second;
        // Each member on the left is matched with the first free equal one on the right.
        std::vector<bool> taken(right.size(), false);
        return std::all_of(left.begin(), left.end(), [&](const Cell& l) {
            for (std::size_t j = 0; j < right.size(); ++j) {
                if (taken[j] || !equal(l, right[j])) continue;
                taken[j] = true;
                return true;
            }
            return false;
        });
    }

    // The members as instances of the left data set, sorted; empty if one is not an instance.
    std::optional<std::pair<std::vector<std::uint32_t>, std::vector<std::uint32_t>>>
    InstanceNumbers(std::span<const Cell> left, std::span<const Cell> right) const {
        const auto isInstance = [](const Cell& cell) { return cell.GetTag() == Tag::Instance; };
        if (!std::all_of(left.begin(), left.end(), isInstance) ||
            !std::all_of(right.begin(), right.end(), isInstance)) {
            return std::nullopt;
        }
        std::vector<std::uint32_t> l;
        std::vector<std::uint32_t> r;
        for (const Cell& cell : left) l.push_back(left_.NumberOf(cell));
        for (const Cell& cell : right) {
            const std::uint32_t number = right_.NumberOf(cell);
            r.push_back(number == kNone ? kNone : right_.partner[number]);
        }
        std::sort(l.begin(), l.end());
        std::sort(r.begin(), r.end());
        return std::pair(std::move(l), std::move(r));
    }

    // A value as shown to a reader: an instance by its label.
    static void AppendShown(std::string& to, const Side& side, const Cell& cell) {
        if (to.size() > kLongestValue) return;
        switch (cell.GetTag()) {
            case Tag::Instance: {
                const Instance& instance = Instance::Of(*cell.Get<SdaiEntityInstance*>());
                const std::string label = LabelOf(instance);
                const std::string name = '#' + std::to_string(instance.Id());
                to += label == name ? name : name + ' ' + label;
                break;
            }
            case Tag::Typed: {
                const kor::TypedValue& typed = *cell.Get<kor::TypedValue*>();
                to += typed.definedType.ToUtf8() + '(';
                AppendShown(to, side, typed.cell);
                to += ')';
                break;
            }
            case Tag::Aggregate: {
                std::vector<Cell> room;
                to += '(';
                bool first = true;
                for (const Cell& member : Members(cell, room)) {
                    if (!std::exchange(first, false)) to += ',';
                    AppendShown(to, side, member);
                }
                to += ')';
                break;
            }
            default: to += PlainText(cell);
        }
    }
    static std::string Shown(const Side& side, const Cell& cell) {
        std::string text;
        AppendShown(text, side, cell);
        if (text.size() <= kLongestValue) return text;
        std::size_t end = kLongestValue;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
        return text.substr(0, end) + "…";
    }

    Side& left_;
    Side& right_;
    const double tolerance_;
    const std::function<void(const Difference&)>& tell_;
    std::uint64_t count_ = 0;
};

}  // namespace

std::uint64_t CompareModels(const kor::Model& left, const kor::Model& right, double tolerance,
                            const std::function<void(const Difference&)>& tell) {
    Side leftSide(left);
    Side rightSide(right);
    Matcher(leftSide, rightSide).Run();
    return Comparer(leftSide, rightSide, tolerance, tell).Run();
}

}  // namespace exchange
