// orx tree: the assembly structure.

#include <unistd.h>

#include <iostream>
#include <optional>

#include "Assembly.h"
#include "Commands.h"
#include "Console.h"
#include "ExchangeText.h"
#include "Html.h"
#include "Json.h"
#include "Loading.h"
#include "Output.h"

namespace host {

namespace {

// (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,25.)
std::string ToText(const Placement& placement) {
    std::string text;
    for (const double value : placement) {
        text += text.empty() ? '(' : ',';
        exchange::AppendReal(text, value);
    }
    return text + ')';
}

std::string NameOf(const SdaiEntityInstance& instance) {
    return '#' + std::to_string(instance.GetInstanceNameId());
}

class TreePrinter {
  public:
    TreePrinter(const NamedModel& model, const calls::Module& module, const Options& options)
        : model_(model), assembly_(model.Model()), module_(module), options_(options) {}

    void Print() {
        if (assembly_.Parts().empty() && !options_.json) {
            std::cout << "no parts: model " << ReadableName(model_.name) << " holds no "
                      << (assembly_.IsDatabase() ? "part_object" : "PRODUCT_DEFINITION") << '\n';
        }
        std::size_t lines = 0;
        assembly_.Walk(options_.depth, options_.placements, [&](const Node& node) {
            if (++lines > options_.lines) {
                PrintCut();
                return false;
            }
            if (options_.json) {
                PrintJson(node);
            } else {
                PrintLine(node);
            }
            return static_cast<bool>(std::cout);
        });
    }

  private:
    void PrintLine(const Node& node) {
        const Part& part = *node.part;
        std::string line = Coloured(Branch(node), Colour::Faint, colours_);
        line += node.level == 0 ? Coloured(Readable(part.name), Colour::Bold, colours_)
                                : Readable(part.name);
        std::string details;
        if (part.id != part.name && !part.id.empty()) details = " [" + Readable(part.id) + ']';
        line += Coloured(details, Colour::Faint, colours_ && !details.empty());
        if (node.occurrences.size() > 1) line += " x" + std::to_string(node.occurrences.size());
        if (options_.placements && node.level != 0) {
            const Occurrence& occurrence = node.occurrences.front();
            line += "  " + NameOf(*occurrence.link) + ' ' +
                    ToText(PlacementOf(occurrence, assembly_, module_));
        }
        if (node.isCycle) line += "  (a part of itself: not shown again)";
        if (node.isCut) {
            const std::size_t count = part.occurrences.size();
            line += "  (" + std::to_string(count) + (count == 1 ? " occurrence" : " occurrences") +
                    " below: --depth)";
        }
        std::cout << line << '\n';
    }

    // The lines that lead to a place.
    std::string Branch(const Node& node) {
        if (node.level == 0) return "";
        // The characters drawn below a place at each level: a line, or blanks below the last.
        below_.resize(node.level);
        below_[node.level - 1] = node.isLast ? "    " : "│   ";
        std::string branch;
        for (std::size_t level = 0; level + 1 < node.level; ++level) branch += below_[level];
        return branch + (node.isLast ? "└── " : "├── ");
    }

    void PrintJson(const Node& node) const {
        const Part& part = *node.part;
        Json json;
        json.Object([&] {
            json.Name("model").Text(NameToUtf8(model_.name));
            json.Name("level").Count(node.level);
            json.Name("part").Text(NameOf(*part.instance));
            json.Name("parent");
            if (node.parent != nullptr) {
                json.Text(NameOf(*node.parent->instance));
            } else {
                json.Null();
            }
            json.Name("id").Text(part.id);
            json.Name("name").Text(part.name);
            json.Name("count").Count(node.level == 0 ? 1 : node.occurrences.size());
            json.Name("components").Count(part.occurrences.size());
            if (options_.placements && node.level != 0) {
                const Occurrence& occurrence = node.occurrences.front();
                json.Name("occurrence").Text(NameOf(*occurrence.link));
                json.Name("placement").Array([&] {
                    for (const double value : PlacementOf(occurrence, assembly_, module_)) {
                        json.Real(value);
                    }
                });
            }
            if (node.isCycle) json.Name("remark").Text("cycle");
            if (node.isCut) json.Name("remark").Text("depth");
        });
        std::cout << json.Line() << '\n';
    }

    // Reports that the tree continues, and its number of places.
    void PrintCut() const {
        const std::optional<double> places =
            assembly_.CountPlaces(options_.depth, options_.placements);
        if (options_.json) {
            Json json;
            json.Object([&] {
                json.Name("model").Text(NameToUtf8(model_.name));
                json.Name("remark").Text("lines");
                json.Name("lines").Count(options_.lines);
                json.Name("places");
                if (places.has_value()) {
                    json.Real(*places);
                } else {
                    json.Null();
                }
            });
            std::cout << json.Line() << '\n';
            return;
        }
        std::cout << "the first " << options_.lines << " lines";
        if (places.has_value()) std::cout << " of " << Shown(*places, 15);
        std::cout << " (--lines shows more)\n";
    }

    const NamedModel& model_;
    const Assembly assembly_;
    const calls::Module& module_;
    const Options& options_;
    const bool colours_ = HasColours(STDOUT_FILENO);
    std::vector<const char*> below_;
};

}  // namespace

int Tree(const Options& options) {
    Session session;
    Load(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    for (const NamedModel& model : session.Models()) {
        if (session.Models().size() > 1 && !options.json)
            std::cout << "model " << ReadableName(model.name) << '\n';
        TreePrinter(model, *module, options).Print();
    }
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
