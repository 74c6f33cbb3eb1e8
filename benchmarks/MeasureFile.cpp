// Reads an exchange file, writes it again, and prints the measurements as a line of numbers:
//
//     measure-file FILE COPY [SCHEMA]
//
// The file is read with the schema that it names, or with the first one of an EXPRESS file. Reading
// and the classification of the bytes are measured in turn. The numbers:
//
//     bytes of the file, instances, seconds to read it, seconds to classify its bytes, peak memory
//     in
//     bytes while it was read, seconds to write COPY, seconds to write the same bytes, elapsed
//     seconds to read it with two threads

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

#include "Exchange.h"

namespace {

double SecondsOn(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The processor time in seconds, which other work on the machine disturbs least; the minimum of
// several runs.
class Fastest {
  public:
    explicit Fastest(clockid_t clock = CLOCK_PROCESS_CPUTIME_ID) : clock_(clock) {}

    template <class Work>
    void Measure(Work work) {
        const double start = SecondsOn(clock_);
        work();
        seconds_ = std::min(seconds_, SecondsOn(clock_) - start);
    }

    double Seconds() const { return seconds_; }

  private:
    clockid_t clock_;
    double seconds_ = 1e9;
};

template <class Work>
double Seconds(int runs, Work work) {
    Fastest fastest;
    for (int i = 0; i < runs; ++i) fastest.Measure(work);
    return fastest.Seconds();
}

// The floor of reading: classifies each byte and counts the places where the class changes, roughly
// the token boundaries of an exchange file.
std::uint64_t CountBounds(const std::string& text) {
    static const auto kClasses = [] {
        std::array<unsigned char, 256> classes{};
        const auto mark = [&classes](const char* characters, unsigned char with) {
            for (; *characters != '\0'; ++characters) {
                classes[static_cast<unsigned char>(*characters)] = with;
            }
        };
        mark(" \t\r\n", 1);
        mark("0123456789+-.", 2);
        mark("ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz", 3);
        mark("'", 4);
        mark("(),;=", 5);
        mark("#$*", 6);
        return classes;
    }();
    std::uint64_t bounds = 0;
    unsigned char before = 0;
    for (const char c : text) {
        const unsigned char now = kClasses[static_cast<unsigned char>(c)];
        bounds += now != before;
        before = now;
    }
    return bounds;
}

std::string Content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return std::move(text).str();
}

// The peak memory of the process so far.
double PeakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

void WritePlainly(const std::string& path, const std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(text.data(), 1, text.size(), file);
    std::fflush(file);
    fsync(fileno(file));
    std::fclose(file);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: measure-file FILE COPY [SCHEMA]\n");
        return 2;
    }
    const std::string path = argv[1];
    const std::string copy = argv[2];
    const exchange::SchemaCatalog schemas;
    exchange::Messages messages;
    exchange::ReadOptions options;
    if (argc == 4) {
        const auto read = exchange::ReadSchemas(argv[3], messages);
        if (read.empty()) {
            std::fprintf(stderr, "%s\n", messages.Errors().front().ToString().c_str());
            return 1;
        }
        options.schema = read.front();
    }

    const double before = PeakBytes();
    exchange::DataSet dataSet;
    options.threads = 1;
    Fastest reading;
    reading.Measure([&] { dataSet = ReadDataSet(path, schemas, options, messages); });
    if (dataSet.model == nullptr) {
        std::fprintf(stderr, "%s\n", messages.Errors().front().ToString().c_str());
        return 1;
    }
    const double memory = PeakBytes() - before;
    std::string text = Content(path);
    volatile std::uint64_t bounds = 0;
    Fastest classifying;
    Fastest readingByTwo(CLOCK_MONOTONIC);
    // Giving a data set up again is not part of reading it.
    const auto readAgain = [&](Fastest& time) {
        exchange::DataSet again;
        time.Measure([&] { again = ReadDataSet(path, schemas, options, messages); });
    };
    for (int i = 0; i < 5; ++i) {
        classifying.Measure([&] { bounds = CountBounds(text); });
        options.threads = 1;
        readAgain(reading);
        options.threads = 2;
        readAgain(readingByTwo);
    }
    const double size = static_cast<double>(text.size());

    const double writing = Seconds(2, [&] { WriteDataSet(dataSet, copy, messages); });
    text = Content(copy);
    const double plainWriting = Seconds(2, [&] { WritePlainly(copy, text); });

    std::printf("%.0f %lu %.9f %.9f %.0f %.9f %.9f %.9f\n", size, dataSet.model->InstanceCount(),
                reading.Seconds(), classifying.Seconds(), memory, writing, plainWriting,
                readingByTwo.Seconds());
}
