// Measures the whole library and prints one table.
//
//     orx-bench DIRECTORY     keeps its files there, and writes bench.json

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "Table.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: orx-bench DIRECTORY\n");
        return 2;
    }
    const std::string directory = argv[1];
    try {
        bench::Table table;
        bench::AddFunctions(table);
        bench::AddScans(table);
        table.Run();
        bench::AddFiles(table, directory);
        table.Print();
        table.WriteJson(directory + "/bench.json");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orx-bench: %s\n", error.what());
        return 1;
    }
}
