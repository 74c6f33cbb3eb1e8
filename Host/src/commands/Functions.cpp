// orx functions: the export table.

#include <iostream>

#include "Signature.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/Json.h"

namespace host {

int Functions(const Options& options) {
    for (const orx::Export& row : orx::kExports) {
        const std::string result = calls::KindNames(row.result);
        if (options.json) {
            Json json;
            json.Object([&] {
                json.Name("name").Text(row.name);
                json.Name("arguments").Array([&] {
                    for (const std::string& kind : calls::ArgumentKinds(row)) json.Text(kind);
                });
                json.Name("result").Text(result);
                json.Name("unit").Text(row.unit);
                json.Name("label").Text(row.label);
            });
            std::cout << json.Line() << '\n';
            continue;
        }
        std::cout << calls::Signature(row) << '\t' << result << '\t' << row.unit << '\t'
                  << row.label << '\n';
    }
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
