// Measures the whole library and prints one table.
//
//     orx-bench DIRECTORY             keeps its files there, and writes bench.json
//     orx-bench DIRECTORY --scale     measures whole data sets of up to a million occurrences or
//                                     parts, and writes scale.json

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include "Table.h"

int main(int argc, char** argv) {
    const bool scale = argc == 3 && std::string_view(argv[2]) == "--scale";
    if (argc != 2 && !scale) {
        std::fprintf(stderr, "usage: orx-bench DIRECTORY [--scale]\n");
        return 2;
    }
    const std::string directory = argv[1];
    try {
        bench::Table table;
        if (scale) {
            bench::AddScale(table, directory);
        } else {
            bench::AddFunctions(table);
            bench::AddScans(table);
            table.Run();
            bench::AddFiles(table, directory);
        }
        table.Print();
        table.WriteJson(directory + (scale ? "/scale.json" : "/bench.json"));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orx-bench: %s\n", error.what());
        return 1;
    }
}
