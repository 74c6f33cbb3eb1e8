// orx tree.

#include <unistd.h>

#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>

#include "Assembly.h"
#include "Commands.h"
#include "Console.h"
#include "ExchangeText.h"
#include "Loading.h"
#include "Output.h"

namespace host {

namespace {

using Json = nlohmann::ordered_json;

// (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,25.)
std::string ToText(const Placement& placement) {
    std::string text;
    for (const double value : placement) {
        text += text.empty() ? '(' : ',';
        exchange::AppendReal(text, value);
    }
    return text + ')';
}

Json ToJson(const Placement& placement) {
    Json list = Json::array();
    for (const double value : placement) list.push_back(RealToJson(value));
    return list;
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
        assembly_.Walk(options_.depth, options_.placements, [this](const Node& node) {
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
        // What is drawn under a place at each level: a line, or nothing under the last.
        below_.resize(node.level);
        below_[node.level - 1] = node.isLast ? "    " : "│   ";
        std::string branch;
        for (std::size_t level = 0; level + 1 < node.level; ++level) branch += below_[level];
        return branch + (node.isLast ? "└── " : "├── ");
    }

    void PrintJson(const Node& node) const {
        const Part& part = *node.part;
        Json line{
            {"model", ReadableName(model_.name)},
            {"level", node.level},
            {"part", NameOf(*part.instance)},
            {"parent", node.parent != nullptr ? Json(NameOf(*node.parent->instance)) : Json()},
            {"id", part.id},
            {"name", part.name},
            {"count", node.level == 0 ? 1 : node.occurrences.size()},
            {"components", part.occurrences.size()}};
        if (options_.placements && node.level != 0) {
            const Occurrence& occurrence = node.occurrences.front();
            line["occurrence"] = NameOf(*occurrence.link);
            line["placement"] = ToJson(PlacementOf(occurrence, assembly_, module_));
        }
        if (node.isCycle) line["remark"] = "cycle";
        if (node.isCut) line["remark"] = "depth";
        std::cout << line << '\n';
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
