// orx report: a self-contained page for a browser, which reads without its script, too. It is also
// well-formed XML.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "DataSets.h"
#include "Exchange.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "page/Drawing.h"
#include "page/Html.h"
#include "page/ReportScript.h"
#include "page/ReportStyle.h"
#include "page/Sections.h"
#include "product/Assembly.h"
#include "product/Configurations.h"

namespace host {

namespace {

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

// The name of a file, or of a database, without where it is.
std::string BaseName(const std::string& file) {
    if (file == "-") return "standard input";
    const std::string path = relational::FileOf(file);
    if (path.empty()) return relational::StemOf(file);
    const std::string name = std::filesystem::path(path).filename().string();
    return name.empty() ? file : name;
}

class ModelReport {
  public:
    // `prefix` begins the ids of its elements.
    ModelReport(const NamedModel& model, const calls::Module& module, std::string prefix)
        : model_(model),
          prefix_(std::move(prefix)),
          module_(module),
          assembly_(model.Model()),
          shapes_(model.Model(), assembly_) {
        // Sections without data are a single line.
        Add("Structure", "structure", Structure(), "no parts");
        Add("Placements", "placements", PartsInSpace(assembly_, shapes_, module_), "no assembly");
        Add("Configuration items", "items", Items(), "no configuration items");
        Add("Effectivities", "effectivities", Effects(), "no effectivities");
        Add("Version families", "families", Families(), "no part in several versions");
        if (!missing_.empty()) body_ += Paragraph("The data hold " + Joined(missing_) + '.');
    }

    std::string Header() const {
        const auto shown = [](const std::string& name) { return Escaped(ReadableName(name)); };
        return "<header>\n<h1 id=\"" + prefix_ + "model\">" + shown(model_.name) + "</h1>\n" +
               Paragraph(shown(BaseName(model_.file)) + " · " +
                         Escaped(Readable(model_.Model().SchemaName().View())) + " · " +
                         Plural(model_.Model().InstanceCount(), "instance")) +
               "</header>\n";
    }

    // Links to the model and its sections.
    std::string Contents(bool withModel) const {
        std::string list;
        if (withModel) list += Link("model", Escaped(ReadableName(model_.name)), "first");
        for (const auto& [id, title] : sections_) list += Link(id, title, "");
        return list.empty() ? "" : "<ul>\n" + list + "</ul>\n";
    }

    const std::string& Body() const { return body_; }

  private:
    void Add(const std::string& title, const std::string& id, const std::string& content,
             const std::string& nothing) {
        if (content.empty()) {
            missing_.push_back(nothing);
            return;
        }
        sections_.emplace_back(id, title);
        body_ += "<section id=\"" + prefix_ + id + "\">\n<h2>" + title + "</h2>\n" + content +
                 "</section>\n";
    }

    std::string Link(const std::string& id, const std::string& title,
                     const std::string& style) const {
        return "<li" + (style.empty() ? "" : " class=\"" + style + '"') + "><a href=\"#" + prefix_ +
               id + "\">" + title + "</a></li>\n";
    }

    std::string Structure() const {
        const std::size_t count = assembly_.Parts().size();
        if (count == 0) return "";
        return Paragraph(Plural(count, "part") + ", " +
                         Plural(assembly_.LinkCount(), "occurrence") + " in assemblies") +
               PartTree(assembly_, prefix_ + "tree");
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
    const std::string prefix_;
    const calls::Module& module_;
    const Assembly assembly_;
    const Shapes shapes_;
    std::string body_;
    std::vector<std::pair<std::string, std::string>> sections_;  // ids and titles
    std::vector<std::string> missing_;
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
    const bool several = session.Models().size() > 1;
    std::vector<std::string> names;
    std::string contents;
    std::string body;
    for (const NamedModel& model : session.Models()) {
        names.push_back(ReadableName(model.name));
        const std::string prefix = several ? 'm' + std::to_string(names.size()) + '-' : "";
        const ModelReport report(model, *module, prefix);
        contents += report.Contents(several);
        // The page of one model begins with its title, that of several with their contents.
        const std::string nav =
            several || contents.empty() ? "" : "<nav>\n" + contents + "</nav>\n";
        body += report.Header() + nav + report.Body();
    }
    if (several) body = "<nav>\n" + contents + "</nav>\n" + body;
    // Nothing but this style sheet and this script, whatever the data hold.
    const std::string policy = std::string("default-src 'none'; style-src 'unsafe-inline'; ") +
                               "script-src '" + kReportScriptHash + '\'';
    const std::string page =
        "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n"
        "<meta charset=\"utf-8\"/>\n<meta http-equiv=\"Content-Security-Policy\" content=\"" +
        policy +
        "\"/>\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n<title>" +
        Escaped(Joined(names)) + "</title>\n<style>" + kReportStyle +
        "</style>\n</head>\n<body>\n<main>\n" + body + "</main>\n<script>" + kReportScript +
        "</script>\n</body>\n</html>\n";
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
