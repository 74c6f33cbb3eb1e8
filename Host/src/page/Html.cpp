// Texts for pages.

#include "page/Html.h"

#include <algorithm>
#include <charconv>

namespace host {

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            case '\'': escaped += "&#39;"; break;
            default: escaped += c;
        }
    }
    return escaped;
}

std::string Shown(double value, int digits) {
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, value + 0.0, std::chars_format::general, digits);
    const std::string_view shown(text, static_cast<std::size_t>(end.ptr - text));
    return shown == "-0" ? "0" : std::string(shown);
}

std::string Pixels(double value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 1);
    return {text, end.ptr};
}

std::string Plural(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string Paragraph(const std::string& text) { return "<p class=\"faint\">" + text + "</p>\n"; }

std::string Table(const std::vector<Column>& columns) {
    std::vector<const Column*> shown;
    for (const Column& column : columns) {
        const bool empty = std::all_of(column.cells.begin(), column.cells.end(),
                                       [](const std::string& cell) { return cell.empty(); });
        if (!empty) shown.push_back(&column);
    }
    if (shown.empty()) return "";
    std::string table = "<div class=\"scroll\"><table>\n<thead><tr>";
    for (const Column* column : shown) {
        table += column->numeric ? "<th class=\"number\">" : "<th>";
        table += column->title + "</th>";
    }
    table += "</tr></thead>\n<tbody>\n";
    // On a narrow display, the style sheet shows each cell on a line of its own, with its title.
    for (std::size_t row = 0; row < shown.front()->cells.size(); ++row) {
        table += "<tr>";
        for (const Column* column : shown) {
            table += column->numeric ? "<td class=\"number\"" : "<td";
            table += " data-title=\"" + column->title + "\">" + column->cells[row] + "</td>";
        }
        table += "</tr>\n";
    }
    return table + "</tbody>\n</table></div>\n";
}

}  // namespace host
