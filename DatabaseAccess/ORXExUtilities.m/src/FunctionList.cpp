// Prints the functions of ORXFunctions.h, made from the export table.

#include <cstddef>
#include <iostream>

#include "ORXExportTable.h"

namespace {

const char* ParameterType(orx::Kind kind) {
    switch (kind) {
        case orx::String: return "std::string_view ";
        case orx::Integer: return "long ";
        case orx::Real: return "double ";
        case orx::Instance: return "SdaiEntityInstance* ";
        case orx::Model: return "SdaiModel& ";
        default: return "const SdaiPrimitiveH& ";
    }
}

bool FillsList(const orx::Export& row) { return row.arguments[2] == orx::RealList; }

void PrintParameters(const orx::Export& row) {
    const std::size_t count = row.ArgumentCount() - (FillsList(row) ? 1 : 0);
    for (std::size_t i = 0; i < count; ++i) {
        std::cout << (i == 0 ? "" : ", ") << ParameterType(row.arguments[i])
                  << static_cast<char>('a' + i);
    }
}

// How the function itself is called, with its own types.
void PrintCall(const orx::Export& row) {
    std::cout << "::" << row.name << '(';
    for (std::size_t i = 0; i < row.ArgumentCount(); ++i) {
        const char parameter = static_cast<char>('a' + i);
        const bool takesText = row.arguments[1] == orx::Model ||
                               (row.result == orx::Nothing && row.arguments[i] == orx::String);
        std::cout << (i == 0 ? "" : ", ");
        if (row.arguments[i] == orx::RealList) {
            std::cout << "filled";
        } else if (row.arguments[i] == orx::Model) {
            std::cout << '&' << parameter;
        } else {
            std::cout << (takesText ? "SdaiString(" : "typed::In(") << parameter << ')';
        }
    }
    std::cout << ')';
}

void Print(const orx::Export& row) {
    std::cout << "\n// " << row.unit << "\ninline auto " << row.name << '(';
    PrintParameters(row);
    std::cout << ") {\n    ";
    if (FillsList(row)) {
        std::cout << "return typed::Filled([&](SdaiListClassOfSdaiReal*& filled) { ";
        PrintCall(row);
        std::cout << "; });\n}\n";
    } else if (row.result == orx::Nothing) {
        PrintCall(row);
        std::cout << ";\n}\n";
    } else {
        std::cout << "return typed::Result<" << unsigned{row.result} << "U>::Of(";
        PrintCall(row);
        std::cout << ");\n}\n";
    }
}

}  // namespace

int main() {
    std::cout << "// Made from the export table; a part of ORXFunctions.h.\n\nnamespace orx {\n";
    for (const orx::Export& row : orx::kExports) Print(row);
    std::cout << "\n}  // namespace orx\n";
    return 0;
}
