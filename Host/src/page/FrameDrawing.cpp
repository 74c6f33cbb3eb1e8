// The drawing of frames in space.

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "page/Drawing.h"
#include "page/Html.h"

namespace host {

namespace {

constexpr double kWidth = 960;
constexpr double kLowest = 260;
constexpr double kHighest = 620;
// Margin around the origins, for axes and labels.
constexpr double kMargin = 80;

struct Point {
    double x = 0;
    double y = 0;
};

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
Point operator*(double s, Point p) { return {s * p.x, s * p.y}; }

// A point or direction of space in the drawing's plane, y downwards.
Point Project(const double* v) {
    constexpr double kCos30 = 0.8660254037844386;
    return {kCos30 * (v[0] + v[1]), 0.5 * (v[0] - v[1]) - v[2]};
}

struct Box {
    double left, top, right, bottom;

    bool Meets(const Box& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

Box Around(Point p, double halfWidth, double halfHeight) {
    return {p.x - halfWidth, p.y - halfHeight, p.x + halfWidth, p.y + halfHeight};
}

std::string Line(const char* style, Point from, Point to) {
    return std::string("<line class=\"") + style + "\" x1=\"" + Pixels(from.x) + "\" y1=\"" +
           Pixels(from.y) + "\" x2=\"" + Pixels(to.x) + "\" y2=\"" + Pixels(to.y) + "\"/>\n";
}

std::string Text(const char* style, Point at, const std::string& text) {
    return std::string("<text class=\"") + style + "\" x=\"" + Pixels(at.x) + "\" y=\"" +
           Pixels(at.y) + "\">" + Escaped(text) + "</text>\n";
}

// The largest of 1, 2, 5, 10, ... that is not above a length.
double RoundLength(double length) {
    const double power = std::pow(10, std::floor(std::log10(length)));
    for (const double factor : {5.0, 2.0}) {
        if (factor * power <= length) return factor * power;
    }
    return power;
}

class FrameDrawing {
  public:
    explicit FrameDrawing(std::span<const Frame> frames) : frames_(frames) {
        FindScale();
        for (const Frame& frame : frames_) {
            origins_.push_back(IsDrawable(frame) ? Place(Project(&frame.placement[9])) : Point());
        }
    }

    std::string Draw() {
        std::string svg =
            "<svg class=\"frames\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
            Pixels(kWidth) + ' ' + Pixels(height_) + "\" role=\"img\">\n" +
            "<title>The frames of the parts, in isometric projection</title>\n";
        svg += DrawLinks();
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            if (IsDrawable(frames_[i])) svg += DrawFrame(i);
        }
        svg += DrawLabels();
        svg += DrawScale();
        return svg + "</svg>\n";
    }

  private:
    // Scales the drawing so that all origins fit.
    void FindScale() {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        Point least{kInfinity, kInfinity};
        Point most{-kInfinity, -kInfinity};
        for (const Frame& frame : frames_) {
            if (!IsDrawable(frame)) continue;
            const Point origin = Project(&frame.placement[9]);
            least = {std::min(least.x, origin.x), std::min(least.y, origin.y)};
            most = {std::max(most.x, origin.x), std::max(most.y, origin.y)};
        }
        const Point extent{most.x - least.x, most.y - least.y};
        scale_ = std::min((kWidth - 2 * kMargin) / extent.x, (kHighest - 2 * kMargin) / extent.y);
        if (!std::isfinite(scale_)) scale_ = 1;
        height_ = std::clamp(scale_ * extent.y + 2 * kMargin, kLowest, kHighest);
        const Point middle = 0.5 * (least + most);
        shift_ = Point{kWidth / 2, height_ / 2} + -scale_ * middle;
    }

    Point Place(Point projected) const { return scale_ * projected + shift_; }

    static double AxisLength(const Frame& frame) {
        return frame.level == 0 ? 40 : frame.level == 1 ? 28 : 20;
    }

    // Lines from each part to its components.
    std::string DrawLinks() const {
        std::string svg;
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            const std::size_t parent = frames_[i].parent;
            if (parent == Frame::kNoParent || !IsDrawable(frames_[i]) ||
                !IsDrawable(frames_[parent])) {
                continue;
            }
            const Point from = origins_[parent];
            const Point to = origins_[i];
            if (std::hypot(to.x - from.x, to.y - from.y) > 1) svg += Line("link", from, to);
        }
        return svg;
    }

    std::string DrawFrame(std::size_t number) const {
        const Frame& frame = frames_[number];
        const double length = AxisLength(frame);
        static constexpr const char* kAxes[] = {"x", "y", "z"};
        std::string svg = "<g class=\"frame\"><title>" + Escaped(frame.label) + "</title>\n";
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const Point direction = Project(&frame.placement[3 * axis]);
            const Point tip = origins_[number] + length * direction;
            svg += Line(kAxes[axis], origins_[number], tip);
            if (frame.level == 0) {
                const Point at = origins_[number] + (length + 8) * direction + Point{-3, 4};
                svg += Text((std::string("axis ") + kAxes[axis]).c_str(), at, kAxes[axis]);
            }
        }
        return svg + "<circle cx=\"" + Pixels(origins_[number].x) + "\" cy=\"" +
               Pixels(origins_[number].y) + "\" r=\"2.5\"/></g>\n";
    }

    // One label for frames at the same position, where it covers no other label.
    std::string DrawLabels() {
        // By position, in the order of the frames.
        std::map<std::pair<long, long>, std::size_t> places;
        std::vector<std::pair<Point, std::vector<std::string>>> labels;
        std::vector<Box> taken;
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            if (!IsDrawable(frames_[i])) continue;
            const Point at = origins_[i];
            const std::pair key{std::lround(at.x / 3), std::lround(at.y / 3)};
            const auto [place, isNew] = places.emplace(key, labels.size());
            if (isNew) {
                labels.push_back({at, {}});
                taken.push_back(Around(at, 4, 4));
            }
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const Point direction = Project(&frames_[i].placement[3 * axis]);
                for (const double part : {0.5, 1.0, frames_[i].level == 0 ? 1.2 : 1.0}) {
                    taken.push_back(Around(at + part * AxisLength(frames_[i]) * direction, 3, 3));
                }
            }
            std::vector<std::string>& names = labels[place->second].second;
            if (std::find(names.begin(), names.end(), frames_[i].label) == names.end()) {
                names.push_back(frames_[i].label);
            }
        }
        std::string svg;
        for (const auto& [at, names] : labels) svg += DrawLabel(at, names, taken);
        return svg;
    }

    // A label is placed near its position, or omitted if there is no room; the frame also has a
    // title.
    std::string DrawLabel(Point at, const std::vector<std::string>& names,
                          std::vector<Box>& taken) const {
        std::string text;
        for (const std::string& name : names) {
            text += (text.empty() ? "" : ", ") + Shortened(name, 28);
        }
        text = Shortened(text, 60);
        const double halfWidth = 3.2 * static_cast<double>(Characters(text)) + 3;
        constexpr double kHalfHeight = 8;
        for (const double distance : {12.0, 26.0, 42.0, 60.0, 80.0}) {
            for (const Point& way : {Point{1, -0.6}, Point{1, 0.6}, Point{-1, -0.6}, Point{-1, 0.6},
                                     Point{0, -1}, Point{0, 1}}) {
                const Point middle = at + Point{way.x * (distance + halfWidth), way.y * distance};
                const Box box = Around(middle, halfWidth, kHalfHeight);
                const bool inside =
                    box.left > 0 && box.right < kWidth && box.top > 0 && box.bottom < height_ - 28;
                if (!inside || std::any_of(taken.begin(), taken.end(),
                                           [&](const Box& other) { return box.Meets(other); })) {
                    continue;
                }
                taken.push_back(box);
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
        const double length = RoundLength(150 / scale_);
        const Point left{16, height_ - 14};
        const Point right = left + Point{scale_ * length, 0};
        return Line("scale", left, right) +
               Text("note", right + Point{8, 4}, Shown(length) + " units of length");
    }

    std::span<const Frame> frames_;
    std::vector<Point> origins_;
    double scale_ = 1;
    double height_ = kLowest;
    Point shift_;
};

}  // namespace

bool IsDrawable(const Frame& frame) {
    constexpr double kFarthest = 1e30;
    return std::all_of(frame.placement.begin(), frame.placement.end(),
                       [](double value) { return std::abs(value) <= kFarthest; });
}

std::string DrawFrames(std::span<const Frame> frames) { return FrameDrawing(frames).Draw(); }

}  // namespace host
