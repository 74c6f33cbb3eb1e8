#include <iostream>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Console.h"
#include "Signature.h"

namespace host {

int Functions(const Options& options) {
    for (const orx::Export& row : orx::kExports) {
        const std::string result = calls::KindNames(row.result);
        if (options.json) {
            const nlohmann::ordered_json line{{"name", row.name},
                                              {"arguments", calls::ArgumentKinds(row)},
                                              {"result", result},
                                              {"unit", row.unit},
                                              {"label", row.label}};
            std::cout << line << '\n';
            continue;
        }
        std::cout << calls::Signature(row) << '\t' << result << '\t' << row.unit << '\t'
                  << row.label << '\n';
    }
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
