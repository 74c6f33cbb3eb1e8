// orx report: a self-contained page for a browser, without scripts. It is also well-formed XML.

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "Exchange.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "page/Drawing.h"
#include "page/Html.h"
#include "page/ReportStyle.h"
#include "product/Assembly.h"
#include "product/Configurations.h"

namespace host {

namespace {

// What a page can hold and a reader take in.
constexpr std::size_t kMostLines = 5000;
constexpr std::size_t kMostFrames = 300;
constexpr std::size_t kDeepest = 60;

std::string Plural(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string Paragraph(const std::string& text) { return "<p class=\"faint\">" + text + "</p>\n"; }

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

// A table; empty columns are omitted.
struct Column {
    std::string title;
    std::vector<std::string> cells;  // escaped
    bool numeric = false;
};

std::string Table(const std::vector<Column>& columns) {
    std::vector<const Column*> shown;
    for (const Column& column : columns) {
        const bool empty = std::all_of(column.cells.begin(), column.cells.end(),
                                       [](const std::string& cell) { return cell.empty(); });
        if (!empty) shown.push_back(&column);
    }
    if (shown.empty()) return "";
    const auto cell = [](const char* element, const Column& column, const std::string& content) {
        return std::string("<") + element + (column.numeric ? " class=\"number\"" : "") + '>' +
               content + "</" + element + '>';
    };
    std::string table = "<div class=\"scroll\"><table>\n<thead><tr>";
    for (const Column* column : shown) table += cell("th", *column, column->title);
    table += "</tr></thead>\n<tbody>\n";
    for (std::size_t row = 0; row < shown.front()->cells.size(); ++row) {
        table += "<tr>";
        for (const Column* column : shown) table += cell("td", *column, column->cells[row]);
        table += "</tr>\n";
    }
    return table + "</tbody>\n</table></div>\n";
}

class ModelReport {
  public:
    ModelReport(const NamedModel& model, const calls::Module& module)
        : model_(model), module_(module), assembly_(model.Model()) {}

    // Sections without data are a single line.
    std::string Write() const {
        struct {
            const char* title;
            std::string content;
            const char* nothing;
        } const sections[] = {
            {"Structure", Structure(), "no parts"},
            {"Placements", Space(), "no assembly"},
            {"Configuration items", Items(), "no configuration items"},
            {"Effectivities", Effects(), "no effectivities"},
            {"Version families", Families(), "no part in several versions"},
        };
        std::string text = Header();
        std::vector<std::string> missing;
        for (const auto& [title, content, nothing] : sections) {
            if (content.empty()) {
                missing.emplace_back(nothing);
            } else {
                text +=
                    "<section>\n<h2>" + std::string(title) + "</h2>\n" + content + "</section>\n";
            }
        }
        if (!missing.empty()) text += Paragraph("The data hold " + Joined(missing) + '.');
        return text;
    }

  private:
    std::string Header() const {
        const auto shown = [](const std::string& name) { return Escaped(ReadableName(name)); };
        return "<header>\n<h1>" + shown(model_.name) + "</h1>\n" +
               Paragraph(shown(model_.file) + " · " +
                         Escaped(Readable(model_.Model().SchemaName().View())) + " · " +
                         Plural(model_.Model().InstanceCount(), "instance")) +
               "</header>\n";
    }

    std::string Structure() const {
        const std::size_t count = assembly_.Parts().size();
        if (count == 0) return "";
        return Paragraph(Plural(count, "part") + ", " +
                         Plural(assembly_.LinkCount(), "occurrence") + " in assemblies") +
               Tree();
    }

    std::string Tree() const {
        std::string list = "<ul class=\"tree\">\n";
        std::size_t level = 0;  // of the list that is open
        std::size_t lines = 0;
        const auto close = [&](std::size_t to) {
            for (; level > to; --level) list += "</ul></details></li>\n";
        };
        assembly_.Walk(kDeepest, false, [&](const Node& node) {
            close(node.level);
            if (++lines > kMostLines) return false;
            const Part& part = *node.part;
            std::string line = Escaped(Readable(part.name));
            if (!part.id.empty() && part.id != part.name) {
                line += " <span class=\"id\">" + Escaped(Readable(part.id)) + "</span>";
            }
            if (node.occurrences.size() > 1) {
                line += " <span class=\"count\">×" + std::to_string(node.occurrences.size()) +
                        "</span>";
            }
            if (node.isCycle) line += " <span class=\"remark\">a part of itself</span>";
            if (node.isCut) line += " <span class=\"remark\">goes on below</span>";
            if (part.occurrences.empty() || node.isCycle || node.isCut) {
                list += "<li><span>" + line + "</span></li>\n";
            } else {
                list += "<li><details open=\"open\"><summary>" + line + "</summary><ul>\n";
                ++level;
            }
            return true;
        });
        close(0);
        list += "</ul>\n";
        if (lines > kMostLines) {
            list += Paragraph("The first " + std::to_string(kMostLines) + " lines.");
        }
        return list;
    }

    // The parts of the assemblies at their positions; a part that is not in an assembly has none.
    std::string Space() const {
        if (assembly_.LinkCount() == 0) return "";
        std::vector<Frame> frames;
        std::vector<std::size_t> way;  // from the root: indices of frames
        bool more = false;
        std::unordered_map<const SdaiEntityInstance*, Placement> placements;  // by link
        assembly_.Walk(kDeepest, true, [&](const Node& node) {
            if (node.level == 0 && node.part->occurrences.empty()) return true;
            more = frames.size() == kMostFrames;
            if (more) return false;
            way.resize(node.level);
            Frame frame{Readable(node.part->name), kIdentity, Frame::kNoParent, node.level};
            if (node.level != 0) {
                const Occurrence& occurrence = node.occurrences.front();
                const auto [known, isNew] = placements.emplace(occurrence.link, kIdentity);
                if (isNew) known->second = PlacementOf(occurrence, assembly_, module_);
                frame.parent = way.back();
                frame.placement = Compose(frames[frame.parent].placement, known->second);
            }
            way.push_back(frames.size());
            frames.push_back(std::move(frame));
            return true;
        });
        const auto hidden = static_cast<std::size_t>(std::count_if(
            frames.begin(), frames.end(), [](const Frame& frame) { return !IsDrawable(frame); }));
        std::string caption =
            "Isometric view of the parts’ frames; axes x red, y green, z blue; dotted lines lead "
            "from an assembly to what it consists of.";
        if (more) caption += " The first " + std::to_string(kMostFrames) + " places.";
        if (hidden != 0) {
            caption += ' ' + Plural(hidden, "place") + " without a placement that can be drawn.";
        }
        std::string content;
        if (hidden != frames.size()) content = DrawFrames(frames);
        return "<figure>\n" + content + "<figcaption>" + caption + "</figcaption>\n</figure>\n" +
               Positions(frames);
    }

    static std::string Positions(const std::vector<Frame>& frames) {
        std::vector<Column> columns{{"part", {}},        {"x", {}, true},      {"y", {}, true},
                                    {"z", {}, true},     {"x axis", {}, true}, {"y axis", {}, true},
                                    {"z axis", {}, true}};
        for (const Frame& frame : frames) {
            columns[0].cells.push_back(std::string(frame.level, ' ') +
                                       Escaped(Shortened(frame.label, 60)));
            const Placement& p = frame.placement;
            for (std::size_t i = 0; i < 3; ++i) {
                columns[1 + i].cells.push_back(Shown(p[9 + i]));
                columns[4 + i].cells.push_back(Shown(p[3 * i], 4) + ", " + Shown(p[3 * i + 1], 4) +
                                               ", " + Shown(p[3 * i + 2], 4));
            }
        }
        return "<details>\n<summary>Positions and axes in the space of the whole</summary>\n" +
               Table(columns) + "</details>\n";
    }

    std::string Items() const {
        std::vector<Column> columns{
            {"id", {}}, {"name", {}}, {"concept", {}}, {"configures", {}}, {"applied by", {}}};
        const std::vector<ConfigurationItem> items = ConfigurationItems(model_.Model(), assembly_);
        for (const ConfigurationItem& item : items) {
            columns[0].cells.push_back(Escaped(item.id));
            columns[1].cells.push_back(Escaped(item.name));
            columns[2].cells.push_back(Escaped(item.productConcept));
            columns[3].cells.push_back(Escaped(Joined(item.designs)));
            columns[4].cells.push_back(Escaped(Joined(item.handlers)));
        }
        return Table(columns);
    }

    std::string Effects() const {
        const std::vector<Effectivity> effectivities =
            Effectivities(model_.Model(), assembly_, module_);
        if (effectivities.empty()) return "";
        std::vector<Column> columns{
            {"id", {}}, {"option", {}}, {"from", {}}, {"to", {}}, {"governs", {}}};
        std::vector<const Effectivity*> all;
        for (const Effectivity& effectivity : effectivities) {
            const bool isBounded = effectivity.scale != Effectivity::Scale::None;
            const auto shown = [isBounded](const Bound& bound) {
                return bound.text.empty() && isBounded ? "open" : Escaped(bound.text);
            };
            all.push_back(&effectivity);
            columns[0].cells.push_back(Escaped(effectivity.id));
            columns[1].cells.push_back(Escaped(effectivity.option));
            columns[2].cells.push_back(shown(effectivity.start));
            columns[3].cells.push_back(shown(effectivity.end));
            columns[4].cells.push_back(Escaped(Joined(effectivity.usages)));
        }
        std::string content = Table(columns);
        const auto add = [&](Effectivity::Scale scale, const char* caption) {
            const std::string bars = DrawBars(all, scale);
            if (bars.empty()) return;
            content +=
                "<figure>\n" + bars + "<figcaption>" + caption + "</figcaption>\n</figure>\n";
        };
        add(Effectivity::Scale::Dates, "Over time; an arrow marks an open end.");
        add(Effectivity::Scale::Ranks, "Over ranks; an arrow marks an open end.");
        return content;
    }

    std::string Families() const {
        const std::vector<VersionFamily> families = VersionFamilies(model_.Model(), assembly_);
        std::string content;
        for (const VersionFamily& family : families) {
            content += "<p>" + Escaped(family.id) + "</p>\n<ol class=\"versions\">\n";
            for (const VersionFamily::Version& version : family.versions) {
                content += "<li>" + Escaped(version.id) + " <span class=\"id\">" +
                           Escaped(version.name) + "</span></li>\n";
            }
            content += "</ol>\n";
        }
        return content;
    }

    const NamedModel& model_;
    const calls::Module& module_;
    const Assembly assembly_;
};

// The default name of the page, which must not exist yet.
std::string NewPage(const Session& session) {
    std::string file = session.Models().front().name + ".html";
    std::error_code error;
    if (std::filesystem::exists(file, error)) {
        Refuse(file + ": is there already (--output " + file + " replaces it)");
    }
    return file;
}

}  // namespace

int Report(const Options& options) {
    Session session;
    Load(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    std::vector<std::string> names;
    std::string body;
    for (const NamedModel& model : session.Models()) {
        names.push_back(ReadableName(model.name));
        body += ModelReport(model, *module).Write();
    }
    const std::string page =
        "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n"
        "<meta charset=\"utf-8\"/>\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n<title>" +
        Escaped(Joined(names)) + "</title>\n<style>" + kReportStyle +
        "</style>\n</head>\n<body>\n<main>\n" + body + "</main>\n</body>\n</html>\n";
    if (options.output == "-") {
        std::cout << page;
        return Flush() ? kDone : kUnusable;
    }
    exchange::Messages messages;
    const std::string file = options.output.empty() ? NewPage(session) : options.output;
    exchange::WriteText(page, file, messages, {options.inPlace});
    Tell(messages);
    if (options.output.empty()) std::cout << "written: " << ReadableName(file) << '\n';
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
