// The table of the benchmarks. A row compares a measured piece of work with its floor: the time
// that plain code takes for the same result on plain data, measured in the same run. Both times are
// divided by the number of units of work; the ratio is the figure that counts.

#ifndef BENCHMARKS_TABLE_H
#define BENCHMARKS_TABLE_H

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <vector>

namespace bench {

// The target of a row.
struct Target {
    std::optional<double> ratio = {};  // maximum multiple of the floor
    std::optional<double> time = {};   // maximum time, in the row's unit
};

struct Row {
    std::string section;
    std::string name;
    std::string unit;  // of the time: "ns/call"
    double time = 0;
    std::optional<double> floor = {};  // none if nothing comparable exists
    Target target = {};

    std::optional<double> Ratio() const {
        return floor.has_value() ? std::optional(time / *floor) : std::nullopt;
    }
    bool IsMet() const {
        return (!target.ratio || Ratio() <= target.ratio) && (!target.time || time <= *target.time);
    }
};

class Table {
  public:
    // Adds a row whose times Google Benchmark measures when Run is called: of `work` and of
    // `floor`, functions of a benchmark::State. Each iteration does `units` units of work.
    template <class Work, class Floor>
    void Measure(Row row, double units, Work work, Floor floor) {
        Register(row, units, false, work);
        Register(row, units, true, floor);
        rows_.push_back(std::move(row));
    }

    // Adds a row that has already been measured.
    void Add(Row row) { rows_.push_back(std::move(row)); }

    // Measures the times. The fastest of several runs counts, the one least disturbed by other work
    // on the machine.
    void Run();

    // The table as Markdown, and as JSON.
    void Print() const;
    void WriteJson(const std::string& path) const;

  private:
    class Reporter;

    template <class Body>
    void Register(const Row& row, double units, bool isFloor, Body body) {
        const std::string name =
            std::to_string(rows_.size()) + (isFloor ? "/floor/" : "/time/") + row.name;
        benchmark::RegisterBenchmark(name.c_str(), body);
        measurements_.push_back({rows_.size(), isFloor, units});
    }

    struct Measurement {
        std::size_t row;
        bool isFloor;
        double units;
    };

    std::vector<Row> rows_;
    std::vector<Measurement> measurements_;
};

// Times body() as the body of a benchmark; its result counts as used.
template <class Body>
auto Repeat(Body body) {
    return [body](benchmark::State& state) mutable {
        for (auto _ : state) {
            auto result = body();
            benchmark::DoNotOptimize(result);
            benchmark::ClobberMemory();
        }
    };
}

// The parts of the table.
void AddFunctions(Table& table);
void AddScans(Table& table);
void AddFiles(Table& table, const std::string& directory);
void AddScale(Table& table, const std::string& directory);

}  // namespace bench

#endif
