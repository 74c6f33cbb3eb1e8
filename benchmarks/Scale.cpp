// How the cost of calling a function for a whole data set grows with it. Each row is one data set,
// measured in a separate process and compared with loading it in that process.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "Table.h"

namespace bench {

namespace {

struct Measured {
    double bytes;
    double loading;
    double calls;
    double asking;
    double memory;

    double Whole() const { return loading + asking; }

    // The best of both runs, least disturbed by other work on the machine.
    Measured Or(const Measured& other) const {
        return {bytes, std::min(loading, other.loading), calls, std::min(asking, other.asking),
                std::min(memory, other.memory)};
    }
};

void Run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

// Loads a file, or creates that many links, and calls a function for everything.
Measured AskOnce(const std::string& function, const std::string& file) {
    const std::string command = std::string(MEASURE_SCALE) + ' ' + function + ' ' + file;
    std::FILE* process = popen(command.c_str(), "r");
    if (process == nullptr) throw std::runtime_error("cannot run " + command);
    Measured m{};
    const int count = std::fscanf(process, "%lf %lf %lf %lf %lf", &m.bytes, &m.loading, &m.calls,
                                  &m.asking, &m.memory);
    if (pclose(process) != 0 || count != 5) throw std::runtime_error("failed: " + command);
    return m;
}

Measured Ask(const std::string& function, const std::string& file, int runs) {
    Measured m = AskOnce(function, file);
    for (int i = 1; i < runs; ++i) m = m.Or(AskOnce(function, file));
    return m;
}

std::string Grouped(long number) {
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, ",");
    return text;
}

const char* const kSection = "Whole data sets, loaded and asked about";

void AddRows(Table& table, const std::string& name, const Measured& m, const Target& target) {
    table.Add({.section = kSection,
               .name = name,
               .unit = "s",
               .time = m.Whole(),
               .floor = m.loading,
               .target = {.ratio = target.ratio}});
    table.Add({.section = kSection,
               .name = "Its memory, back references included",
               .unit = "bytes/byte",
               .time = m.memory / m.bytes,
               .target = {.time = target.time}});
}

void AddGrowth(Table& table, const std::string& name, double larger, double smaller,
               std::optional<double> most) {
    table.Add({.section = kSection,
               .name = name,
               .unit = "s",
               .time = larger,
               .floor = smaller,
               .target = {.ratio = most}});
}

void AddAssemblies(Table& table, const std::string& directory) {
    struct Size {
        long occurrences;
        const char* megabytes;         // with geometry
        Target target;                 // times loading, bytes/byte
        std::optional<double> growth;  // over the next smaller size
    };
    static const Size kSizes[] = {{10'000, "8.8", {3.0, {}}, {}},
                                  {100'000, "88", {3.0, {}}, {}},
                                  {1'000'000, "880", {{}, 2.2}, 12.0}};
    // As many for each size: the best of more runs is better.
    constexpr int kRuns = 5;
    for (const char* shape : {"tree", "flat", "deep"}) {
        double before = 0;
        for (const Size& size : kSizes) {
            const std::string file = directory + "/assembly.stp";
            Run(std::string(GENERATE_STEP) + ' ' + std::to_string(size.occurrences) + ' ' +
                size.megabytes + ' ' + shape + " > " + file);
            const Measured m = Ask("GetAbsPlacement", file, kRuns);
            std::filesystem::remove(file);
            const std::string of = Grouped(size.occurrences) + " occurrences, " + shape;
            AddRows(table, "GetAbsPlacement, " + of, m, size.target);
            if (before > 0)
                AddGrowth(table, "Over a tenth of them", m.Whole(), before, size.growth);
            before = m.Whole();
        }
    }
}

void AddDatabases(Table& table, const std::string& directory) {
    const auto measure = [&](const char* function, long parts, int runs, double ratio) {
        const std::string file = directory + "/database.stp";
        Run(std::string(GENERATE_DATABASE) + ' ' + std::to_string(parts) + " > " + file);
        const Measured m = Ask(function, file, runs);
        std::filesystem::remove(file);
        AddRows(table, std::string(function) + ", " + Grouped(parts) + " parts", m, {ratio, {}});
    };
    measure("IsVersion", 1'000'000, 3, 2.5);
    for (const char* function : {"IsNewer", "ORXIdEff", "ORXIdCfg", "IsPartConfigurated"}) {
        measure(function, 100'000, 5, 2.0);
    }
}

}  // namespace

void AddScale(Table& table, const std::string& directory) {
    AddAssemblies(table, directory);
    AddDatabases(table, directory);
    const double few = Ask("GetAbsPlacement", "10000", 9).asking;
    const double many = Ask("GetAbsPlacement", "100000", 9).asking;
    AddGrowth(table, "Making a link, then asking: 100,000 over 10,000", many, few, 10.5);
}

}  // namespace bench
