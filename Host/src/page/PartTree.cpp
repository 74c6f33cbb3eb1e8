// The tree of parts on a page.

#include <optional>
#include <string>

#include "console/Display.h"
#include "page/Html.h"
#include "page/Sections.h"

namespace host {

namespace {

// What a page can hold, and a reader takes in at once.
constexpr std::size_t kMostLines = 10'000;
constexpr std::size_t kMostOpen = 60;
constexpr std::size_t kDeepestLine = 60;

// What the data say of a place, as one line.
std::string LineOf(const Node& node) {
    const Part& part = *node.part;
    std::string line = Escaped(Readable(part.name));
    if (!part.id.empty() && part.id != part.name) {
        line += " <span class=\"id\">" + Escaped(Readable(part.id)) + "</span>";
    }
    if (node.occurrences.size() > 1) {
        line += " <span class=\"count\">×" + std::to_string(node.occurrences.size()) + "</span>";
    }
    if (node.isCycle) line += " <span class=\"remark\">a part of itself</span>";
    if (node.isCut) line += " <span class=\"remark\">goes on below</span>";
    return line;
}

// The field is shown by the script that serves it.
std::string Filter(const std::string& id) {
    return "<p class=\"filter\" hidden=\"hidden\"><label>Filter <input type=\"search\" "
           "data-tree=\"" +
           id + "\" placeholder=\"name or number\"/></label> <output></output></p>\n";
}

}  // namespace

std::string PartTree(const Assembly& assembly, const std::string& id) {
    const std::size_t depth = assembly.DeepestLevel(kMostLines, kDeepestLine, false);
    const std::optional<double> places = assembly.CountPlaces(depth, false);
    const bool isLarge = !places || *places > kMostOpen;
    std::string list;
    std::size_t level = 0;  // of the list that is open
    std::size_t lines = 0;
    bool isCut = false;
    const auto close = [&](std::size_t to) {
        for (; level > to; --level) list += "</ul></details></li>\n";
    };
    assembly.Walk(depth, false, [&](const Node& node) {
        close(node.level);
        if (++lines > kMostLines) return false;
        isCut |= node.isCut;
        if (node.part->occurrences.empty() || node.isCycle || node.isCut) {
            list += "<li><span>" + LineOf(node) + "</span></li>\n";
        } else {
            const bool isOpen = node.level == 0 || !isLarge;
            list += isOpen ? "<li><details open=\"open\">" : "<li><details>";
            list += "<summary>" + LineOf(node) + "</summary><ul>\n";
            ++level;
        }
        return true;
    });
    close(0);
    std::string text;
    if (isLarge) text += Filter(id);
    text += "<ul class=\"tree\" id=\"" + id + "\">\n" + list + "</ul>\n";
    const char* all = " <code>orx tree</code> shows all.";
    if (lines > kMostLines) {
        text += Paragraph("The first " + std::to_string(kMostLines) + " lines." + all);
    } else if (isCut) {
        text += Paragraph("Down to level " + std::to_string(depth + 1) + "." + all);
    }
    return text;
}

}  // namespace host
