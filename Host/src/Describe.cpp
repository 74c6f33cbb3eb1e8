#include <iomanip>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Console.h"
#include "Loading.h"
#include "Output.h"

namespace host {

namespace {

// The number of instances by type name: declared types first, each group in alphabetical order.
struct TypeCounts {
    std::map<std::string, std::uint64_t> declared;
    std::map<std::string, std::uint64_t> undeclared;

    explicit TypeCounts(const kor::Model& model) {
        for (const kor::ModelType& type : model.Types()) {
            auto& counts = type.entity->IsDeclared() ? declared : undeclared;
            counts[std::string(type.entity->Name().View())] += type.instanceCount;
        }
    }
};

void PrintCounts(const std::map<std::string, std::uint64_t>& counts) {
    for (const auto& [name, count] : counts) {
        if (count != 0) std::cout << std::setw(10) << count << "  " << name << '\n';
    }
}

}  // namespace

int Describe(const Options& options) {
    Session session;
    Load(session, options);
    for (const NamedModel& model : session.Models()) {
        const TypeCounts counts(model.Model());
        const std::string schema(model.Model().SchemaName().View());
        if (options.json) {
            std::cout << nlohmann::ordered_json{{"model", ReadableName(model.name)},
                                                {"file", ReadableName(model.file)},
                                                {"schema", schema},
                                                {"instances", model.Model().InstanceCount()},
                                                {"declared", counts.declared},
                                                {"undeclared", counts.undeclared}}
                      << '\n';
            continue;
        }
        std::cout << "model " << model.name << '\n';
        if (!model.file.empty()) std::cout << "file " << model.file << '\n';
        std::cout << "schema " << schema << '\n'
                  << "instances " << model.Model().InstanceCount() << '\n';
        PrintCounts(counts.declared);
        if (!counts.undeclared.empty()) {
            std::cout << "of types that the schema does not declare\n";
            PrintCounts(counts.undeclared);
        }
    }
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
