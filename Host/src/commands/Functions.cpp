// orx functions: the export table.

#include <iostream>
#include <string>

#include "Signature.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"

namespace host {

namespace {

void PrintAsJson(const orx::Export& row) {
    Json json;
    json.Object([&] {
        json.Name("name").Text(row.name);
        json.Name("arguments").Array([&] {
            for (const std::string& kind : calls::ArgumentKinds(row)) json.Text(kind);
        });
        json.Name("result").Text(calls::KindNames(row.result));
        json.Name("unit").Text(row.unit);
        json.Name("label").Text(row.label);
    });
    std::cout << json.Line() << '\n';
}

void Print(Form form) {
    Columns columns(form, {"function", "result", "unit", "label"});
    for (const orx::Export& row : orx::kExports) {
        if (form == Form::Json) {
            PrintAsJson(row);
        } else {
            columns.Add({calls::Signature(row), calls::KindNames(row.result), std::string(row.unit),
                         std::string(row.label)});
        }
    }
}

}  // namespace

int Functions(const Options& options) {
    Print(FormOf(options));
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
