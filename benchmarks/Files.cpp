// Reading and writing exchange files of 1 to 100 megabytes, each in a separate process.

#include <cmath>
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
    double instances;
    double reading;
    double classifying;
    double memory;
    double writing;
    double plainWriting;
    double readingByTwo;

    std::string Speed(double seconds) const {
        return ", " + std::to_string(std::lround(bytes / seconds / 1e6)) + " MB/s";
    }
};

// Reads with the schema of an EXPRESS file, if one is given.
Measured Measure(const std::string& file, const std::string& schema = "") {
    const std::string copy = file + ".copy";
    const std::string command =
        std::string(MEASURE_FILE) + ' ' + file + ' ' + copy + (schema.empty() ? "" : " " + schema);
    std::FILE* process = popen(command.c_str(), "r");
    if (process == nullptr) throw std::runtime_error("cannot run " + command);
    Measured m{};
    const int count =
        std::fscanf(process, "%lf %lf %lf %lf %lf %lf %lf %lf", &m.bytes, &m.instances, &m.reading,
                    &m.classifying, &m.memory, &m.writing, &m.plainWriting, &m.readingByTwo);
    if (pclose(process) != 0 || count != 8) throw std::runtime_error("failed: " + command);
    std::filesystem::remove(copy);
    return m;
}

const char* const kSection = "Exchange files";

void AddReading(Table& table, const std::string& of, int megabytes, const Measured& m) {
    const double perByte = 1e9 / m.bytes;
    table.Add({.section = kSection,
               .name = "Reading a file" + of + m.Speed(m.reading),
               .unit = "ns/byte",
               .time = m.reading * perByte,
               .floor = m.classifying * perByte,
               .target = {.ratio = 3.0}});
    table.Add({.section = kSection,
               .name = "Reading a file with two threads" + of + m.Speed(m.readingByTwo),
               .unit = "ns/byte",
               .time = m.readingByTwo * perByte,
               .floor = m.classifying * perByte,
               .target = {.ratio = megabytes > 1 ? std::optional(2.1) : std::nullopt}});
}

}  // namespace

void AddFiles(Table& table, const std::string& directory) {
    for (const int megabytes : {1, 10, 46, 100}) {
        const std::string file = directory + "/generated-" + std::to_string(megabytes) + ".stp";
        const std::string command = std::string(GENERATE_STEP) + ' ' +
                                    std::to_string(200 * megabytes) + ' ' +
                                    std::to_string(megabytes) + " > " + file;
        if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
        const Measured m = Measure(file);
        const double perByte = 1e9 / m.bytes;
        const std::string of = " of " + std::to_string(megabytes) + " MB";
        AddReading(table, of, megabytes, m);
        // The full schema is not part of this project.
        const std::string fullSchema = FULL_SCHEMA;
        if (megabytes == 46 && std::filesystem::exists(fullSchema)) {
            AddReading(table, of + ", the full schema", megabytes, Measure(file, fullSchema));
        }
        std::filesystem::remove(file);
        table.Add({.section = kSection,
                   .name = "Memory while reading a file" + of,
                   .unit = "bytes/byte",
                   .time = m.memory / m.bytes,
                   .target = {.time = 3.0}});
        table.Add({.section = kSection,
                   .name = "Memory for each instance, file" + of,
                   .unit = "bytes",
                   .time = m.memory / m.instances});
        table.Add({.section = kSection,
                   .name = "Writing a file" + of + m.Speed(m.writing),
                   .unit = "ns/byte",
                   .time = m.writing * perByte,
                   .floor = m.plainWriting * perByte});
    }
}

}  // namespace bench
