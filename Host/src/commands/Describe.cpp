// orx describe: the contents of data sets.

#include <cstdint>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>

#include "ExchangeText.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"

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

void PrintJson(const NamedModel& model, const TypeCounts& counts) {
    Json json;
    const auto write = [&json](const char* name, const std::map<std::string, std::uint64_t>& all) {
        json.Name(name).Object([&] {
            for (const auto& [type, count] : all) json.Name(Readable(type)).Count(count);
        });
    };
    json.Object([&] {
        json.Name("model").Text(NameToUtf8(model.name));
        json.Name("file").Text(NameToUtf8(model.file));
        json.Name("schema").Text(model.Model().SchemaName().ToUtf8());
        json.Name("instances").Count(model.Model().InstanceCount());
        write("declared", counts.declared);
        write("undeclared", counts.undeclared);
    });
    std::cout << json.Line() << '\n';
}

}  // namespace

int Describe(const Options& options) {
    Session session;
    Load(session, options);
    for (const NamedModel& model : session.Models()) {
        const TypeCounts counts(model.Model());
        const std::string schema(model.Model().SchemaName().View());
        if (options.json) {
            PrintJson(model, counts);
            continue;
        }
        std::cout << "model " << ReadableName(model.name) << '\n';
        if (!model.file.empty()) std::cout << "file " << ReadableName(model.file) << '\n';
        std::cout << "schema " << Readable(schema) << '\n'
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
