// Prints the module's linker version script: the functions of the export table are global,
// everything else is local.

#include <cstdio>

#include "ORXExportTable.h"

int main() {
    std::puts("{\n  global:");
    for (const orx::Export& row : orx::kExports) {
        std::printf("    %.*s;\n", static_cast<int>(row.name.size()), row.name.data());
    }
    std::puts("  local: *;\n};");
}
