// orx tree: the assembly structure.

#include <unistd.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ExchangeText.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"
#include "page/Html.h"
#include "product/Assembly.h"
#include "product/Geometry.h"
#include "script/Interrupt.h"
#include "services/Suggestions.h"

namespace host {

namespace {

// (1.,0.,0.,0.,1.,0.,0.,0.,1.,0.,0.,25.)
std::string ToText(const orx::Placement& placement) {
    std::string text;
    for (const double value : RealsOf(placement)) {
        text += text.empty() ? '(' : ',';
        exchange::AppendReal(text, value);
    }
    return text + ')';
}

std::string NameOf(const SdaiEntityInstance& instance) {
    return '#' + std::to_string(instance.GetInstanceNameId());
}

[[noreturn]] void RefuseRoot(const Assembly& assembly, const std::string& name) {
    std::vector<std::string> known;
    for (const Part& part : assembly.Parts()) {
        known.push_back(part.id);
        known.push_back(part.name);
    }
    Refuse("no part has the id, the name or the instance '" + name + "'" +
           kor::DidYouMean(name, known));
}

class TreePrinter {
  public:
    TreePrinter(const NamedModel& model, const calls::Module& module, const Options& options)
        : model_(model),
          assembly_(model.Model()),
          module_(module),
          options_(options),
          single_(options.placements || options.absolute || options.names),
          form_(FormOf(options)) {}

    void Print() {
        if (!options_.root.empty() && !assembly_.StartAt(options_.root)) {
            RefuseRoot(assembly_, options_.root);
        }
        std::optional<Columns> rows;
        if (form_ == Form::Csv) rows_ = &rows.emplace(Form::Csv, CsvHeaders());
        if (assembly_.Parts().empty() && form_ != Form::Json && form_ != Form::Csv) {
            std::cout << "no parts: model " << ReadableName(model_.name) << " holds no "
                      << (assembly_.IsDatabase() ? "part_object" : "PRODUCT_DEFINITION") << '\n';
        }
        std::size_t lines = 0;
        assembly_.Walk(options_.depth, single_, [&](const Node& node) {
            ThrowIfInterrupted();
            if (++lines > options_.lines) {
                PrintCut();
                return false;
            }
            if (HasPlacements()) Place(node);
            if (rows_ != nullptr) {
                AddRow(node);
            } else if (options_.json) {
                PrintJson(node);
            } else {
                PrintLine(node);
            }
            return static_cast<bool>(std::cout);
        });
    }

  private:
    bool HasPlacements() const { return options_.placements || options_.absolute; }

    // The placement of a place, in its parent or in its root; that of a root is none.
    void Place(const Node& node) {
        placements_.resize(node.level + 1);
        if (node.level == 0) {
            placements_[0] = orx::kIdentity;
            return;
        }
        const orx::Placement own = PlacementOf(node.occurrences.front(), assembly_, module_);
        placements_[node.level] =
            options_.absolute ? Compose(placements_[node.level - 1], own) : own;
    }

    std::vector<std::string> CsvHeaders() const {
        std::vector<std::string> headers{"level", "part", "parent", "id", "name", "count"};
        if (single_) headers.insert(headers.end(), {"occurrence", "occurrence name"});
        if (HasPlacements()) {
            for (const char column : {'x', 'y', 'z', 't'}) {
                for (const char row : {'1', '2', '3'}) headers.push_back({column, row});
            }
        }
        return headers;
    }

    void AddRow(const Node& node) const {
        const Part& part = *node.part;
        const bool isRoot = node.level == 0;
        std::vector<std::string> row{std::to_string(node.level),
                                     NameOf(*part.instance),
                                     isRoot ? "" : NameOf(*node.parent->instance),
                                     Readable(part.id),
                                     Readable(part.name),
                                     std::to_string(isRoot ? 1 : node.occurrences.size())};
        if (single_) {
            row.push_back(isRoot ? "" : NameOf(*node.occurrences.front().link));
            row.push_back(isRoot ? "" : Readable(NameOf(node.occurrences.front())));
        }
        if (HasPlacements()) {
            for (const double value : RealsOf(placements_[node.level])) {
                std::string number;
                if (!isRoot) exchange::AppendReal(number, value);
                row.push_back(std::move(number));
            }
        }
        rows_->Add(std::move(row));
    }

    void PrintLine(const Node& node) {
        const Part& part = *node.part;
        std::string line = Coloured(Branch(node), Colour::Faint, colours_);
        line += node.level == 0 ? Coloured(Readable(part.name), Colour::Bold, colours_)
                                : Readable(part.name);
        std::string details;
        if (part.id != part.name && !part.id.empty()) details = " [" + Readable(part.id) + ']';
        line += Coloured(details, Colour::Faint, colours_ && !details.empty());
        if (node.occurrences.size() > 1) line += " x" + std::to_string(node.occurrences.size());
        if (options_.names && node.level != 0) {
            line += "  '" + Readable(NameOf(node.occurrences.front())) + '\'';
        }
        if (HasPlacements() && node.level != 0) {
            line += "  " + NameOf(*node.occurrences.front().link) + ' ' +
                    ToText(placements_[node.level]);
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
            if (single_ && node.level != 0) {
                json.Name("occurrence").Text(NameOf(*node.occurrences.front().link));
            }
            if (options_.names && node.level != 0) {
                json.Name("occurrenceName").Text(NameOf(node.occurrences.front()));
            }
            if (HasPlacements() && node.level != 0) {
                json.Name("placement").Array([&] {
                    for (const double value : RealsOf(placements_[node.level])) json.Real(value);
                });
            }
            if (node.isCycle) json.Name("remark").Text("cycle");
            if (node.isCut) json.Name("remark").Text("depth");
        });
        std::cout << json.Line() << '\n';
    }

    // Reports that the tree continues, and its number of places.
    void PrintCut() const {
        const std::optional<double> places = assembly_.CountPlaces(options_.depth, single_);
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
        if (rows_ != nullptr) {
            Complain("the first " + std::to_string(options_.lines) + " lines (--lines shows more)");
            return;
        }
        std::cout << "the first " << options_.lines << " lines";
        if (places.has_value()) std::cout << " of " << Shown(*places, 15);
        std::cout << " (--lines shows more)\n";
    }

    const NamedModel& model_;
    Assembly assembly_;
    const calls::Module& module_;
    const Options& options_;
    const bool single_;  // each occurrence by itself
    const Form form_;
    std::vector<orx::Placement> placements_;  // by level, on the way to the place that is printed
    Columns* rows_ = nullptr;                 // where CSV is asked for
    const bool colours_ = HasColours(STDOUT_FILENO);
    std::vector<const char*> below_;
};

}  // namespace

int Tree(const Options& options) {
    Session session;
    Load(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    for (const NamedModel& model : session.Models()) {
        if (session.Models().size() > 1 && !options.json && !options.csv)
            std::cout << "model " << ReadableName(model.name) << '\n';
        TreePrinter(model, *module, options).Print();
    }
    return Flush() ? kDone : kUnusable;
}

int PartsList(const Options& options) {
    Session session;
    Load(session, options);
    const Form form = FormOf(options);
    int status = kDone;
    for (const NamedModel& model : session.Models()) {
        Assembly assembly(model.Model());
        if (!options.root.empty() && !assembly.StartAt(options.root)) {
            RefuseRoot(assembly, options.root);
        }
        Columns rows(form, {"quantity", "id", "name", "part", "of"});
        for (const Part* whole : assembly.Roots()) {
            if (whole->occurrences.empty()) continue;
            const auto totals = assembly.Totals(*whole);
            if (!totals.has_value()) {
                Complain("'" + whole->name + "' is left out: a part of it is a part of itself");
                status = kStatementFailed;
                continue;
            }
            for (const auto& [part, count] : *totals) {
                if (form != Form::Json) {
                    rows.Add({Shown(count, 15), Readable(part->id), Readable(part->name),
                              NameOf(*part->instance), Readable(whole->name)});
                    continue;
                }
                Json json;
                json.Object([&, &part = part, &count = count] {
                    json.Name("model").Text(NameToUtf8(model.name));
                    json.Name("quantity");
                    if (count < 1e15) {
                        json.Count(static_cast<std::uint64_t>(count));
                    } else {
                        json.Real(count);
                    }
                    json.Name("id").Text(part->id);
                    json.Name("name").Text(part->name);
                    json.Name("part").Text(NameOf(*part->instance));
                    json.Name("of").Text(NameOf(*whole->instance));
                });
                std::cout << json.Line() << '\n';
            }
        }
    }
    return Flush() ? status : kUnusable;
}

}  // namespace host
