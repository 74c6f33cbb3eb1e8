// The drawings of parts in space.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "console/Printable.h"
#include "page/Drawing.h"
#include "page/Html.h"

namespace host {

namespace {

// As wide as a small display, so that texts keep a readable size there.
constexpr double kWidth = 440;
constexpr double kLowest = 220;
constexpr double kHighest = 360;
constexpr std::size_t kColours = 6;
// Frames that are many have shorter axes, and not all of them a label.
constexpr std::size_t kMany = 30;
constexpr std::size_t kMostLabels = 14;

struct Point {
    double x = 0;
    double y = 0;
};

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
Point operator*(double s, Point p) { return {s * p.x, s * p.y}; }

// A direction to look from: right and up in the drawing, and towards the viewer.
struct View {
    const char* name;
    const char* style;
    KORMathVector right;
    KORMathVector up;
    KORMathVector nearer;
    bool isLabelled;
};

constexpr double kCos30 = 0.8660254037844386;
constexpr View kViews[] = {
    {"Isometric", "frames", {kCos30, kCos30, 0}, {-0.5, 0.5, 1}, {1, -1, 1}, true},
    {"Front", "view front", {1, 0, 0}, {0, 0, 1}, {0, -1, 0}, false},
    {"From above", "view above", {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, false},
    {"From the right", "view right", {0, 1, 0}, {0, 0, 1}, {1, 0, 0}, false},
};

// A point of a frame's own axes, in space.
KORMathVector InSpace(const Point3& point, const Frame& frame) {
    const Point3 placed = Placed(point, frame.placement);
    return {placed[0], placed[1], placed[2]};
}

// An area of the drawing.
struct Area {
    double left, top, right, bottom;

    bool Meets(const Area& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

Area Around(Point p, double halfWidth, double halfHeight) {
    return {p.x - halfWidth, p.y - halfHeight, p.x + halfWidth, p.y + halfHeight};
}

std::string Line(const char* style, Point from, Point to) {
    return std::string("<line class=\"") + style + "\" x1=\"" + Pixels(from.x) + "\" y1=\"" +
           Pixels(from.y) + "\" x2=\"" + Pixels(to.x) + "\" y2=\"" + Pixels(to.y) + "\"/>\n";
}

std::string Text(const std::string& style, Point at, const std::string& text) {
    return "<text class=\"" + style + "\" x=\"" + Pixels(at.x) + "\" y=\"" + Pixels(at.y) + "\">" +
           Escaped(text) + "</text>\n";
}

// The largest of 1, 2, 5, 10, ... that is not above a length.
double RoundLength(double length) {
    const double power = std::pow(10, std::floor(std::log10(length)));
    for (const double factor : {5.0, 2.0}) {
        if (factor * power <= length) return factor * power;
    }
    return power;
}

// Whether a frame is drawn as its axes.
bool HasAxes(const Frame& frame) { return frame.level == 0 || frame.whole.IsEmpty(); }

class FrameDrawing {
  public:
    FrameDrawing(std::span<const Frame> frames, const View& view, const std::string& unit)
        : frames_(frames), view_(view), unit_(unit) {
        FindScale();
        for (const Frame& frame : frames_) {
            origins_.push_back(IsDrawable(frame) ? Place(frame.placement.translation) : Point());
        }
    }

    std::string Draw() {
        std::string svg = std::string("<svg class=\"") + view_.style +
                          "\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
                          Pixels(kWidth) + ' ' + Pixels(height_) + "\" role=\"img\">\n<title>" +
                          view_.name + "</title>\n";
        svg += DrawLinks();
        svg += DrawBoxes();
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            if (IsDrawable(frames_[i]) && HasAxes(frames_[i])) svg += DrawAxes(i);
        }
        if (view_.isLabelled) svg += DrawLabels();
        svg += DrawScale();
        return svg + "</svg>\n";
    }

  private:
    // A point or direction of space in the drawing's plane, y downwards.
    Point Project(const KORMathVector& v) const { return {Dot(view_.right, v), -Dot(view_.up, v)}; }
    Point Place(const KORMathVector& v) const { return scale_ * Project(v) + shift_; }

    // Scales the drawing so that all origins and boxes fit.
    void FindScale() {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        Point least{kInfinity, kInfinity};
        Point most{-kInfinity, -kInfinity};
        const auto add = [&](const KORMathVector& v) {
            const Point p = Project(v);
            least = {std::min(least.x, p.x), std::min(least.y, p.y)};
            most = {std::max(most.x, p.x), std::max(most.y, p.y)};
        };
        bool hasBoxes = false;
        for (const Frame& frame : frames_) {
            if (!IsDrawable(frame)) continue;
            if (HasAxes(frame)) add(frame.placement.translation);
            if (frame.box.IsEmpty()) continue;
            hasBoxes = true;
            for (unsigned i = 0; i < 8; ++i) add(InSpace(frame.box.Corner(i), frame));
        }
        // For axes and labels.
        const double margin = hasBoxes ? 40 : 56;
        const Point extent{most.x - least.x, most.y - least.y};
        scale_ = std::min((kWidth - 2 * margin) / extent.x, (kHighest - 2 * margin) / extent.y);
        if (!std::isfinite(scale_)) scale_ = 1;
        height_ = std::clamp(scale_ * extent.y + 2 * margin, kLowest, kHighest);
        const Point middle = 0.5 * least + 0.5 * most;
        shift_ = Point{kWidth / 2, height_ / 2} + -scale_ * middle;
    }

    double AxisLength(const Frame& frame) const {
        const double length = frame.level == 0 ? 34 : frame.level == 1 ? 24 : 16;
        return frame.level == 0 || frames_.size() < kMany ? length : length / 2;
    }

    // Lines from each part to components without a box.
    std::string DrawLinks() const {
        std::string svg;
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            const std::size_t parent = frames_[i].parent;
            if (parent == Frame::kNoParent || !HasAxes(frames_[i]) || !IsDrawable(frames_[i]) ||
                !IsDrawable(frames_[parent])) {
                continue;
            }
            const Point from = origins_[parent];
            const Point to = origins_[i];
            if (std::hypot(to.x - from.x, to.y - from.y) > 1) svg += Line("link", from, to);
        }
        return svg;
    }

    // The boxes, the farthest first, so that nearer ones cover them.
    std::string DrawBoxes() const {
        std::vector<std::pair<double, std::size_t>> order;
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            if (!IsDrawable(frames_[i]) || frames_[i].box.IsEmpty()) continue;
            const KORMathVector middle = InSpace(frames_[i].box.Middle(), frames_[i]);
            order.emplace_back(Dot(view_.nearer, middle), i);
        }
        std::stable_sort(order.begin(), order.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        std::string svg;
        for (const auto& [depth, i] : order) svg += DrawBox(frames_[i]);
        return svg;
    }

    // The sides of a box that the viewer sees.
    std::string DrawBox(const Frame& frame) const {
        std::string svg = "<g class=\"box c" + std::to_string(frame.branch % kColours) +
                          "\"><title>" + Escaped(frame.label) + "</title>\n";
        const std::array<KORMathVector, 3> axes = AxesOf(frame.placement);
        for (unsigned axis = 0; axis < 3; ++axis) {
            const double slope = Dot(view_.nearer, axes[axis]);
            if (!(std::abs(slope) > 1e-9)) continue;
            const unsigned side = slope > 0 ? 1U << axis : 0;
            const unsigned one = 1U << ((axis + 1) % 3);
            const unsigned other = 1U << ((axis + 2) % 3);
            static constexpr const char* kSides[] = {"sx", "sy", "sz"};
            svg += std::string("<polygon class=\"") + kSides[axis] + "\" points=\"";
            for (const unsigned corner : {side, side | one, side | one | other, side | other}) {
                const Point p = Place(InSpace(frame.box.Corner(corner), frame));
                if (corner != side) svg += ' ';
                svg += Pixels(p.x) + ',' + Pixels(p.y);
            }
            svg += "\"/>\n";
        }
        return svg + "</g>\n";
    }

    std::string DrawAxes(std::size_t number) const {
        const Frame& frame = frames_[number];
        const double length = AxisLength(frame);
        static constexpr const char* kAxes[] = {"x", "y", "z"};
        std::string svg = "<g class=\"frame\"><title>" + Escaped(frame.label) + "</title>\n";
        const std::array<KORMathVector, 3> axes = AxesOf(frame.placement);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const Point direction = Project(axes[axis]);
            if (view_.isLabelled || std::hypot(direction.x, direction.y) > 0.01) {
                svg += Line(kAxes[axis], origins_[number], origins_[number] + length * direction);
                if (frame.level == 0) {
                    const Point at = origins_[number] + (length + 8) * direction + Point{-3, 4};
                    svg += Text(std::string("axis ") + kAxes[axis], at, kAxes[axis]);
                }
            }
        }
        return svg + "<circle cx=\"" + Pixels(origins_[number].x) + "\" cy=\"" +
               Pixels(origins_[number].y) + "\" r=\"2.5\"/></g>\n";
    }

    // One label for frames at the same position, where it covers no other label; those of the top
    // levels first.
    std::string DrawLabels() {
        std::vector<std::size_t> order(frames_.size());
        for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
        std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
            return frames_[a].level < frames_[b].level;
        });
        // By position, in the order of the frames.
        std::map<std::pair<long, long>, std::size_t> places;
        std::vector<std::pair<Point, std::vector<std::string>>> labels;
        std::vector<Area> taken;
        std::set<std::string> boxes;  // the names of parts with a box, each of which is shown once
        for (const std::size_t i : order) {
            const Frame& frame = frames_[i];
            if (!IsDrawable(frame)) continue;
            if (HasAxes(frame)) TakeAxes(i, taken);
            const bool isBox = !frame.whole.IsEmpty();
            // The name of a whole drawing is its title.
            if (isBox && (frame.level == 0 || !boxes.insert(frame.label).second)) {
                if (frame.level != 0 || frames_.size() > 1) continue;
            }
            const Point at = isBox ? Place(InSpace(frame.whole.Middle(), frame)) : origins_[i];
            const std::pair key{std::lround(at.x / 3), std::lround(at.y / 3)};
            const auto [place, isNew] = places.emplace(key, labels.size());
            if (isNew) {
                labels.push_back({at, {}});
                taken.push_back(Around(at, 4, 4));
            }
            // A box covers another one's label.
            if (isBox && !isNew) continue;
            std::vector<std::string>& names = labels[place->second].second;
            if (std::find(names.begin(), names.end(), frame.label) == names.end()) {
                names.push_back(frame.label);
            }
        }
        std::string svg;
        std::size_t count = 0;
        for (const auto& [at, names] : labels) {
            if (++count > kMostLabels) break;
            svg += DrawLabel(at, names, taken);
        }
        return svg;
    }

    // No label covers the axes.
    void TakeAxes(std::size_t number, std::vector<Area>& taken) const {
        const Frame& frame = frames_[number];
        for (const KORMathVector& axis : AxesOf(frame.placement)) {
            const Point direction = Project(axis);
            for (const double part : {0.5, 1.0, frame.level == 0 ? 1.2 : 1.0}) {
                taken.push_back(
                    Around(origins_[number] + part * AxisLength(frame) * direction, 3, 3));
            }
        }
    }

    // A label is placed near its position, or omitted if there is no room; the frame also has a
    // title.
    std::string DrawLabel(Point at, const std::vector<std::string>& names,
                          std::vector<Area>& taken) const {
        std::string text;
        for (const std::string& name : names) {
            text += (text.empty() ? "" : ", ") + Shortened(name, 24);
        }
        text = Shortened(text, 40);
        const double halfWidth = 3.4 * static_cast<double>(Characters(text)) + 3;
        constexpr double kHalfHeight = 8;
        for (const double distance : {12.0, 26.0, 42.0, 60.0, 80.0}) {
            for (const Point& way : {Point{1, -0.6}, Point{1, 0.6}, Point{-1, -0.6}, Point{-1, 0.6},
                                     Point{0, -1}, Point{0, 1}}) {
                const Point middle = at + Point{way.x * (distance + halfWidth), way.y * distance};
                const Area area = Around(middle, halfWidth, kHalfHeight);
                const bool inside = area.left > 0 && area.right < kWidth && area.top > 0 &&
                                    area.bottom < height_ - 28;
                if (!inside || std::any_of(taken.begin(), taken.end(),
                                           [&](const Area& other) { return area.Meets(other); })) {
                    continue;
                }
                taken.push_back(area);
                std::string svg;
                if (distance > 12) {
                    const Point near{middle.x - way.x * halfWidth, middle.y};
                    svg = Line("leader", at, near);
                }
                return svg + Text("label", middle + Point{0, 4}, text);
            }
        }
        return "";
    }

    std::string DrawScale() const {
        const double length = RoundLength(100 / scale_);
        const Point left{12, height_ - 12};
        const Point right = left + Point{scale_ * length, 0};
        return Line("scale", left, right) +
               Text("note", right + Point{8, 4},
                    Shown(length) + ' ' + (unit_.empty() ? "units of length" : unit_));
    }

    std::span<const Frame> frames_;
    const View& view_;
    const std::string& unit_;
    std::vector<Point> origins_;
    double scale_ = 1;
    double height_ = kLowest;
    Point shift_;
};

}  // namespace

bool IsDrawable(const Frame& frame) {
    constexpr double kFarthest = 1e30;
    const std::array<double, 12> reals = RealsOf(frame.placement);
    return std::all_of(reals.begin(), reals.end(),
                       [](double value) { return std::abs(value) <= kFarthest; });
}

std::string DrawFrames(std::span<const Frame> frames, const std::string& unit) {
    std::string views = "<div class=\"views\">\n";
    for (const View& view : kViews) {
        views += std::string("<div><p class=\"faint\">") + view.name + "</p>\n" +
                 FrameDrawing(frames, view, unit).Draw() + "</div>\n";
    }
    return views + "</div>\n";
}

}  // namespace host
