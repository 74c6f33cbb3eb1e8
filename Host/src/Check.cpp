// orx check: what the schemas of data sets do not allow.

#include <iostream>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Conformity.h"
#include "Console.h"
#include "Loading.h"
#include "Output.h"

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
                std::cout << nlohmann::ordered_json{{"file", ReadableName(model.file)},
                                                    {"instance", instance},
                                                    {"type", ReadableName(type)},
                                                    {"attribute", violation.attribute},
                                                    {"problem", ReadableName(violation.text)}}
                          << '\n';
            } else {
                std::cout << ReadableName(model.file + ": " + instance + ' ' + type + '.' +
                                          violation.attribute + ": " + violation.text)
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
