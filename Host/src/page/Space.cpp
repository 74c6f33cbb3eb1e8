// The parts in space: drawings and positions.

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "console/Display.h"
#include "console/Printable.h"
#include "page/Drawing.h"
#include "page/Html.h"
#include "page/Sections.h"

namespace host {

namespace {

// What a drawing can hold.
constexpr std::size_t kMostFrames = 300;
constexpr std::size_t kDeepestFrame = 60;

class Space {
  public:
    Space(const Assembly& assembly, const Shapes& shapes, const calls::Module& module)
        : assembly_(assembly), shapes_(shapes), module_(module) {
        FindUnit();
        FindWholes();
        FindFrames();
    }

    std::string Write() const {
        if (frames_.empty()) return "";
        const auto hidden = static_cast<std::size_t>(std::count_if(
            frames_.begin(), frames_.end(), [](const Frame& frame) { return !IsDrawable(frame); }));
        std::string views;
        if (hidden != frames_.size()) views = DrawFrames(frames_, Symbol());
        return "<figure>\n" + views + "<figcaption>" + Caption(hidden) +
               "</figcaption>\n</figure>\n" + Positions();
    }

  private:
    std::size_t NumberOf(const Part& part) const {
        return static_cast<std::size_t>(&part - assembly_.Parts().data());
    }

    std::string Symbol() const { return unit_ ? Readable(unit_->symbol) : ""; }

    // The unit of the page: that of the first assembly, or else of the first part that has one.
    void FindUnit() {
        const auto take = [this](const Part& part) {
            if (!unit_) unit_ = shapes_.UnitOf(part);
        };
        for (const Part* root : assembly_.Roots()) {
            if (!root->occurrences.empty()) take(*root);
        }
        for (const Part& part : assembly_.Parts()) {
            take(part);
            isConverted_ |= FactorOf(part) != 1;
        }
    }

    // By which lengths of a part are multiplied.
    double FactorOf(const Part& part) const {
        const std::optional<LengthUnit>& own = shapes_.UnitOf(part);
        return own && unit_ ? own->metres / unit_->metres : 1;
    }

    Box BoxOf(const Part& part) const {
        Box box = shapes_.BoxOf(part);
        const double factor = FactorOf(part);
        if (factor == 1 || box.IsEmpty()) return box;
        const orx::Placement larger{{{factor, 0, 0}, {0, factor, 0}, {0, 0, factor}}, {}};
        return Placed(box, larger);
    }

    // The placement of an occurrence in its parent, in the unit of the page.
    const orx::Placement& PlacementIn(const Part& parent, const Occurrence& occurrence) {
        const auto [known, isNew] = placements_.emplace(occurrence.link, orx::kIdentity);
        orx::Placement& placement = known->second;
        if (isNew) {
            placement = PlacementOf(occurrence, assembly_, module_);
            placement.translation = FactorOf(parent) * placement.translation;
        }
        return placement;
    }

    // The boxes around parts with all their components, components first. A part that contains
    // itself is left out of its own box.
    void FindWholes() {
        const std::vector<Part>& parts = assembly_.Parts();
        wholes_.resize(parts.size());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            wholes_[i] = BoxOf(parts[i]);
            hasBoxes_ |= !wholes_[i].IsEmpty();
        }
        if (!hasBoxes_) return;
        struct Step {
            const Part* part;
            std::size_t next;  // the occurrence to be looked at
        };
        std::vector<bool> isMet(parts.size());
        std::vector<bool> isDone(parts.size());
        std::vector<Step> way;
        for (const Part& root : parts) {
            if (isMet[NumberOf(root)]) continue;
            way.push_back({&root, 0});
            isMet[NumberOf(root)] = true;
            while (!way.empty()) {
                Step& step = way.back();
                const Part& part = *step.part;
                if (step.next < part.occurrences.size()) {
                    const Part& component = *part.occurrences[step.next++].part;
                    if (!isMet[NumberOf(component)]) {
                        isMet[NumberOf(component)] = true;
                        way.push_back({&component, 0});
                    }
                    continue;
                }
                for (const Occurrence& occurrence : part.occurrences) {
                    const std::size_t component = NumberOf(*occurrence.part);
                    if (!isDone[component] || wholes_[component].IsEmpty()) continue;
                    wholes_[NumberOf(part)].Add(
                        Placed(wholes_[component], PlacementIn(part, occurrence)));
                }
                isDone[NumberOf(part)] = true;
                way.pop_back();
            }
        }
    }

    // The places down to the level to which all of them can be drawn. A part that is neither in an
    // assembly nor has geometry has none.
    void FindFrames() {
        const auto isNowhere = [this](const Part& root) {
            return root.occurrences.empty() && wholes_[NumberOf(root)].IsEmpty();
        };
        const auto nowhere = static_cast<std::size_t>(
            std::count_if(assembly_.Roots().begin(), assembly_.Roots().end(),
                          [&](const Part* root) { return isNowhere(*root); }));
        depth_ = assembly_.DeepestLevel(kMostFrames + nowhere, kDeepestFrame, true);
        std::vector<std::size_t> way;  // from the root: indices of frames
        std::size_t branch = 0;
        assembly_.Walk(depth_, true, [&](const Node& node) {
            if (node.level == 0 && isNowhere(*node.part)) return true;
            isCut_ = frames_.size() == kMostFrames;
            if (isCut_) return false;
            isDeeper_ |= node.isCut;
            way.resize(node.level);
            if (node.level == 1) ++branch;
            Frame frame{Readable(node.part->name),
                        orx::kIdentity,
                        Frame::kNoParent,
                        node.level,
                        branch,
                        {},
                        wholes_[NumberOf(*node.part)]};
            const bool showsComponents =
                !node.part->occurrences.empty() && !node.isCut && !node.isCycle;
            frame.box = showsComponents ? BoxOf(*node.part) : frame.whole;
            if (node.level != 0) {
                frame.parent = way.back();
                frame.placement = Compose(frames_[frame.parent].placement,
                                          PlacementIn(*node.parent, node.occurrences.front()));
            }
            way.push_back(frames_.size());
            frames_.push_back(std::move(frame));
            return true;
        });
    }

    std::string Caption(std::size_t hidden) const {
        std::string caption =
            hasBoxes_ ? "A box goes around the vertices and edges of a part. A "
                        "part without geometry is shown by its axes: x red, y green, z blue."
                      : "The parts’ axes: x red, y green, z blue; dotted lines lead from an "
                        "assembly to what it consists of.";
        if (unit_) {
            caption += " Lengths in " + Escaped(Symbol());
            caption += isConverted_ ? "; those in other units are converted." : ".";
        }
        if (isCut_) {
            caption += " The first " + std::to_string(kMostFrames) + " places.";
        } else if (isDeeper_) {
            caption += " Down to level " + std::to_string(depth_ + 1) +
                       (hasBoxes_ ? ", where a box goes around all that is below." : ".");
        }
        if (shapes_.IsCut()) {
            caption += " Some boxes are missing, since the parts share too much geometry.";
        }
        if (hidden != 0) {
            caption += ' ' + Plural(hidden, "place") + " without a placement that can be drawn.";
        }
        return caption;
    }

    std::string Positions() const {
        const std::string unit = unit_ ? " (" + Escaped(Symbol()) + ')' : "";
        std::vector<Column> columns{{"part", {}},           {"x" + unit, {}, true},
                                    {"y" + unit, {}, true}, {"z" + unit, {}, true},
                                    {"x axis", {}, true},   {"y axis", {}, true},
                                    {"z axis", {}, true},   {"box" + unit, {}, true}};
        for (const Frame& frame : frames_) {
            columns[0].cells.push_back(std::string(frame.level, ' ') +
                                       Escaped(Shortened(frame.label, 60)));
            auto column = columns.begin() + 1;
            for (int i = 0; i < 3; ++i) {
                (column++)->cells.push_back(Shown(frame.placement.translation[i]));
            }
            for (const KORMathVector& axis : AxesOf(frame.placement)) {
                (column++)->cells.push_back(Shown(axis[0], 4) + ", " + Shown(axis[1], 4) + ", " +
                                            Shown(axis[2], 4));
            }
            std::string size;
            for (std::size_t i = 0; i < 3 && !frame.whole.IsEmpty(); ++i) {
                size += (i == 0 ? "" : " × ") + Shown(frame.whole.most[i] - frame.whole.least[i]);
            }
            columns[7].cells.push_back(size);
        }
        return "<details>\n<summary>Positions and axes in the space of the whole</summary>\n" +
               Table(columns) + "</details>\n";
    }

    const Assembly& assembly_;
    const Shapes& shapes_;
    const calls::Module& module_;
    std::optional<LengthUnit> unit_;
    bool isConverted_ = false;
    bool hasBoxes_ = false;
    std::unordered_map<const SdaiEntityInstance*, orx::Placement> placements_;  // by link
    std::vector<Box> wholes_;                                                   // by part
    std::vector<Frame> frames_;
    std::size_t depth_ = 0;
    bool isCut_ = false;
    bool isDeeper_ = false;
};

}  // namespace

std::string PartsInSpace(const Assembly& assembly, const Shapes& shapes,
                         const calls::Module& module) {
    return Space(assembly, shapes, module).Write();
}

}  // namespace host
