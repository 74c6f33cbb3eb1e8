// orx check: reports values that violate the schema.

#include <cstdint>
#include <iostream>
#include <string>

#include "Conformity.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"

namespace host {

int Check(const Options& options) {
    Session session;
    Load(session, options);
    std::uint64_t violations = 0;
    for (const NamedModel& model : session.Models()) {
        const auto print = [&](const exchange::Violation& violation) {
            const std::string instance = '#' + std::to_string(violation.instance->Id());
            const std::string& type = violation.instance->Type().entity->FoldedName();
            if (options.json) {
                Json json;
                json.Object([&] {
                    json.Name("file").Text(NameToUtf8(model.file));
                    json.Name("instance").Text(instance);
                    json.Name("type").Text(type);
                    json.Name("attribute").Text(violation.attribute);
                    json.Name("problem").Text(violation.text);
                });
                std::cout << json.Line() << '\n';
            } else {
                std::cout << ReadableName(model.file) << ": "
                          << Readable(instance + ' ' + type + '.' + violation.attribute + ": " +
                                      violation.text)
                          << '\n';
            }
        };
        const exchange::Conformity result = exchange::CheckModel(model.Model(), print);
        violations += result.violations;
        for (const auto& [type, count] : result.undeclared) {
            Complain(model.file + ": " + std::to_string(count) + " of the undeclared type " + type +
                     " not checked");
        }
    }
    if (!Flush()) return kUnusable;
    return violations == 0 ? kDone : kDifferent;
}

}  // namespace host
