// Reading and writing exchange files of 1, 10 and 100 megabytes, each in a process of its own.

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
};

Measured Measure(const std::string& file) {
    const std::string copy = file + ".copy";
    const std::string command = std::string(MEASURE_FILE) + ' ' + file + ' ' + copy;
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

}  // namespace

void AddFiles(Table& table, const std::string& directory) {
    const std::string section = "Exchange files";
    for (const int megabytes : {1, 10, 100}) {
        const std::string file = directory + "/generated-" + std::to_string(megabytes) + ".stp";
        const std::string command = std::string(GENERATE_STEP) + ' ' +
                                    std::to_string(200 * megabytes) + ' ' +
                                    std::to_string(megabytes) + " > " + file;
        if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
        const Measured m = Measure(file);
        std::filesystem::remove(file);
        const double perByte = 1e9 / m.bytes;
        const std::string of = " of " + std::to_string(megabytes) + " MB";
        const auto speed = [&m](double seconds) {
            return ", " + std::to_string(std::lround(m.bytes / seconds / 1e6)) + " MB/s";
        };
        table.Add({section,
                   "Reading a file" + of + speed(m.reading),
                   "ns/byte",
                   m.reading * perByte,
                   m.classifying * perByte,
                   {3.0, {}}});
        table.Add({section,
                   "Reading a file with two threads" + of + speed(m.readingByTwo),
                   "ns/byte",
                   m.readingByTwo * perByte,
                   m.classifying * perByte,
                   {megabytes > 1 ? std::optional(2.1) : std::nullopt, {}}});
        table.Add({section,
                   "Memory while reading a file" + of,
                   "bytes/byte",
                   m.memory / m.bytes,
                   {},
                   {{}, 3.0}});
        table.Add({section,
                   "Memory for each instance, file" + of,
                   "bytes",
                   m.memory / m.instances,
                   {},
                   {}});
        table.Add({section,
                   "Writing a file" + of + speed(m.writing),
                   "ns/byte",
                   m.writing * perByte,
                   m.plainWriting * perByte,
                   {}});
    }
}

}  // namespace bench
