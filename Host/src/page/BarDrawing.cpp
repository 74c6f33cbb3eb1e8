// The drawing of effectivities over time or over ranks.

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "console/Printable.h"
#include "page/Drawing.h"
#include "page/Html.h"

namespace host {

namespace {

using Scale = Effectivity::Scale;

// Places from left to right are in per cent of the width, so that the drawing fits every display
// and its texts keep their size; a row is a name with its bar below.
constexpr double kRight = 100;
constexpr std::size_t kLongestName = 40;
constexpr double kTop = 22;
constexpr double kRow = 38;

struct Tick {
    double value;
    std::string text;
};

// Around four round values in a range.
std::vector<Tick> RankTicks(double least, double most) {
    double step = std::pow(10, std::floor(std::log10((most - least) / 4)));
    for (const double factor : {2.0, 2.5, 2.0}) {  // 1, 2, 5, 10
        if ((most - least) / step > 4) step *= factor;
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

// The first days of months or years, around four.
std::vector<Tick> DateTicks(double least, double most) {
    using namespace std::chrono;
    constexpr double kMonth = 30.44;
    int months = 1;
    for (const int step : {3, 6, 12, 24, 60, 120, 240, 600, 1200, 2400, 6000, 12000}) {
        if ((most - least) / kMonth / months > 5) months = step;
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

// A place from left to right.
std::string Percent(double value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 3);
    return '"' + std::string(text, end.ptr) + "%\"";
}

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

// The scale from left to right: values from `from` to `to`.
struct Axis {
    double from;
    double to;

    double Place(double value) const { return kRight * ((value - from) / (to - from)); }
};

Axis AxisOf(const Rows& rows, Scale scale) {
    const double least = rows.least;
    const double most = rows.most;
    // Space for open ends.
    const double room = most > least ? 0.06 * (most - least) : scale == Scale::Dates ? 365 : 10;
    const double from =
        least - (scale == Scale::Ranks && least >= 0 ? std::min(room, least) : room);
    return {from, most + room};
}

void AppendTick(std::string& svg, const Tick& tick, const Axis& axis, double bottom) {
    const std::string x = Percent(axis.Place(tick.value));
    svg += "<line class=\"tick\" x1=";
    svg += x + " x2=" + x + " y1=" + Number(kTop - 6) + " y2=" + Number(bottom);
    svg += "/>\n<text class=\"note middle\" x=";
    svg += x + " y=" + Number(kTop - 10) + ">" + tick.text + "</text>\n";
}

// The head of an arrow at an open end.
std::string Head(double place, double middle, const char* points) {
    return "<svg class=\"head\" x=" + Percent(place) + " y=" + Number(middle) +
           "><polygon points=\"" + points + "\"/></svg>\n";
}

void AppendBar(std::string& svg, const Effectivity& effectivity, const Axis& axis, double top) {
    const Bound& start = effectivity.start;
    const Bound& end = effectivity.end;
    const double left = start.value ? axis.Place(*start.value) : 0;
    const double right = std::max(end.value ? axis.Place(*end.value) : kRight, left + 0.4);
    const double middle = top + 26;
    const std::string bounds =
        (start.text.empty() ? "open" : start.text) + " – " + (end.text.empty() ? "open" : end.text);
    // A name is as long as it is; one of a bar at the right ends there.
    const bool endsThere = left > 60;
    svg += std::string("<text class=\"") + (endsThere ? "name end" : "name") +
           "\" x=" + Percent(endsThere ? kRight : left) + " y=" + Number(middle - 10) + ">" +
           Escaped(Shortened(effectivity.id, kLongestName)) + "</text>\n<g class=\"bar\"><title>" +
           Escaped(effectivity.id + ": " + bounds) + "</title><rect x=" + Percent(left) +
           " width=" + Percent(right - left) + " y=" + Number(middle - 5) + " height=\"10\"/>\n";
    if (!start.value) svg += Head(0, middle, "-8,0 0,-5 0,5");
    if (!end.value) svg += Head(kRight, middle, "8,0 0,-5 0,5");
    svg += "</g>\n";
}

}  // namespace

std::string DrawBars(std::span<const Effectivity* const> effectivities, Scale scale) {
    const Rows rows = RowsOf(effectivities, scale);
    if (rows.effectivities.empty()) return "";
    const Axis axis = AxisOf(rows, scale);
    const double bottom = kTop + kRow * static_cast<double>(rows.effectivities.size());
    const std::string title =
        scale == Scale::Dates ? "Effectivities over time" : "Effectivities over ranks";
    std::string svg =
        "<svg class=\"bars\" xmlns=\"http://www.w3.org/2000/svg\" height=" + Number(bottom + 8) +
        " role=\"img\">\n<title>" + title + "</title>\n";
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
