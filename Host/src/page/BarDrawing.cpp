// The drawing of effectivities over time or over ranks.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "page/Drawing.h"
#include "page/Html.h"

namespace host {

namespace {

using Scale = Effectivity::Scale;

constexpr double kWidth = 960;
constexpr double kRight = kWidth - 24;
constexpr std::size_t kLongestName = 24;
constexpr double kTop = 26;
constexpr double kRow = 28;

struct Tick {
    double value;
    std::string text;
};

// Around eight round values in a range.
std::vector<Tick> RankTicks(double least, double most) {
    double step = std::pow(10, std::floor(std::log10((most - least) / 8)));
    for (const double factor : {2.0, 2.5, 2.0}) {  // 1, 2, 5, 10
        if ((most - least) / step > 8) step *= factor;
    }
    step = std::max(step, 1.0);
    std::vector<Tick> ticks;
    // Multiplied rather than summed: a step may be too small to change a large value.
    const double first = std::ceil(least / step);
    for (int i = 0; i <= 20 && (first + i) * step <= most; ++i) {
        ticks.push_back({(first + i) * step, Shown((first + i) * step, 12)});
    }
    return ticks;
}

// The first days of months or years, around eight.
std::vector<Tick> DateTicks(double least, double most) {
    using namespace std::chrono;
    constexpr double kMonth = 30.44;
    int months = 1;
    for (const int step : {3, 6, 12, 24, 60, 120, 240, 600, 1200, 2400, 6000, 12000}) {
        if ((most - least) / kMonth / months > 9) months = step;
    }
    const year_month_day first(sys_days(days(static_cast<int>(std::floor(least)))));
    int number = static_cast<int>(first.year()) * 12 +
                 static_cast<int>(static_cast<unsigned>(first.month())) - 1;
    number -= number % months;
    std::vector<Tick> ticks;
    for (;; number += months) {
        const year_month_day day(year(number / 12), month(static_cast<unsigned>(number % 12) + 1),
                                 std::chrono::day(1));
        const double value = static_cast<double>(sys_days(day).time_since_epoch().count());
        if (value > most) return ticks;
        if (value < least) continue;
        std::string text = std::to_string(number / 12);
        if (months < 12) text += (number % 12 < 9 ? "-0" : "-") + std::to_string(number % 12 + 1);
        ticks.push_back({value, text});
    }
}

std::string Number(double value) { return std::string("\"").append(Pixels(value)).append("\""); }

// The effectivities that are drawn, and the range of their bounds.
struct Rows {
    std::vector<const Effectivity*> effectivities;
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();
};

bool IsDrawn(const Effectivity& effectivity, Scale scale) {
    const auto isOnScale = [](const Bound& bound) {
        return bound.value.has_value() || bound.text.empty();
    };
    const Bound& start = effectivity.start;
    const Bound& end = effectivity.end;
    return effectivity.scale == scale && isOnScale(start) && isOnScale(end) &&
           (start.value || end.value);
}

Rows RowsOf(std::span<const Effectivity* const> effectivities, Scale scale) {
    Rows rows;
    for (const Effectivity* effectivity : effectivities) {
        if (!IsDrawn(*effectivity, scale)) continue;
        rows.effectivities.push_back(effectivity);
        for (const Bound* bound : {&effectivity->start, &effectivity->end}) {
            if (!bound->value) continue;
            rows.least = std::min(rows.least, *bound->value);
            rows.most = std::max(rows.most, *bound->value);
        }
    }
    return rows;
}

// The scale from left to right: values from `from` to `to`, to the right of the names.
struct Axis {
    double leftmost;
    double from;
    double to;

    double Place(double value) const {
        return leftmost + (kRight - leftmost) * ((value - from) / (to - from));
    }
};

Axis AxisOf(const Rows& rows, Scale scale) {
    const double least = rows.least;
    const double most = rows.most;
    // Space for open ends.
    const double room = most > least ? 0.06 * (most - least) : scale == Scale::Dates ? 365 : 10;
    const double from =
        least - (scale == Scale::Ranks && least >= 0 ? std::min(room, least) : room);
    std::size_t longest = 6;
    for (const Effectivity* effectivity : rows.effectivities) {
        longest = std::max(longest, std::min(kLongestName, Characters(effectivity->id)));
    }
    return {7 * static_cast<double>(longest) + 20, from, most + room};
}

void AppendTick(std::string& svg, const Tick& tick, const Axis& axis, double bottom) {
    const std::string x = Number(axis.Place(tick.value));
    svg += "<line class=\"tick\" x1=";
    svg += x + " x2=" + x + " y1=" + Number(kTop - 6) + " y2=" + Number(bottom);
    svg += "/>\n<text class=\"note middle\" x=";
    svg += x + " y=" + Number(kTop - 12) + ">" + tick.text + "</text>\n";
}

void AppendBar(std::string& svg, const Effectivity& effectivity, const Axis& axis, double top) {
    const Bound& start = effectivity.start;
    const Bound& end = effectivity.end;
    const double left = start.value ? axis.Place(*start.value) : axis.leftmost;
    const double right = std::max(end.value ? axis.Place(*end.value) : kRight, left + 3);
    const double middle = top + kRow / 2;
    const double y1 = middle - 5;
    const double y2 = middle + 5;
    // Arrow heads at open ends.
    std::string points;
    const auto add = [&points](double x, double y) {
        points.append(points.empty() ? "" : " ").append(Pixels(x) + ',' + Pixels(y));
    };
    add(left + (start.value ? 0 : 8), y1);
    add(right - (end.value ? 0 : 8), y1);
    if (!end.value) add(right, middle);
    add(right - (end.value ? 0 : 8), y2);
    add(left + (start.value ? 0 : 8), y2);
    if (!start.value) add(left, middle);
    const std::string bounds =
        (start.text.empty() ? "open" : start.text) + " – " + (end.text.empty() ? "open" : end.text);
    svg += "<text class=\"name\" x=\"0\" y=" + Number(middle + 4) + ">" +
           Escaped(Shortened(effectivity.id, kLongestName)) +
           "</text>\n<polygon class=\"bar\" points=\"" + points + "\"><title>" +
           Escaped(effectivity.id + ": " + bounds) + "</title></polygon>\n";
}

}  // namespace

std::string DrawBars(std::span<const Effectivity* const> effectivities, Scale scale) {
    const Rows rows = RowsOf(effectivities, scale);
    if (rows.effectivities.empty()) return "";
    const Axis axis = AxisOf(rows, scale);
    const double bottom = kTop + kRow * static_cast<double>(rows.effectivities.size());
    std::string svg =
        "<svg class=\"bars\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + Pixels(kWidth) +
        ' ' + Pixels(bottom + 8) + "\" role=\"img\">\n<title>" +
        (scale == Scale::Dates ? "Effectivities over time" : "Effectivities over ranks") +
        "</title>\n";
    for (const Tick& tick :
         scale == Scale::Dates ? DateTicks(axis.from, axis.to) : RankTicks(axis.from, axis.to)) {
        AppendTick(svg, tick, axis, bottom);
    }
    double top = kTop;
    for (const Effectivity* effectivity : rows.effectivities) {
        AppendBar(svg, *effectivity, axis, top);
        top += kRow;
    }
    return svg + "</svg>\n";
}

}  // namespace host
