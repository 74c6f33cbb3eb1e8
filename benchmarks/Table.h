// The table of the benchmarks. A row is a measured piece of work and its floor: what plain code
// takes for the same answer on plain data, measured in the same run. Both times are divided by the
// number of units that the work has; the ratio is the figure that counts.

#ifndef BENCHMARKS_TABLE_H
#define BENCHMARKS_TABLE_H

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <vector>

namespace bench {

// What a row should reach.
struct Target {
    std::optional<double> ratio = {};  // at most so many times the floor
    std::optional<double> time = {};   // at most so many units of time
};

struct Row {
    std::string section;
    std::string name;
    std::string unit;  // of the time: "ns/call"
    double time = 0;
    std::optional<double> floor = {};  // none: a figure that has no counterpart
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
    // Adds a row whose times Google Benchmark takes when Run is called: of `work` and of `floor`,
    // functions of a benchmark::State. A unit is one of `units` in each iteration.
    template <class Work, class Floor>
    void Measure(Row row, double units, Work work, Floor floor) {
        Register(row, units, false, work);
        Register(row, units, true, floor);
        rows_.push_back(std::move(row));
    }

    // Adds a row that is measured already.
    void Add(Row row) { rows_.push_back(std::move(row)); }

    // Takes the times: of several runs of each the fastest counts, the one that other work on the
    // machine disturbed least.
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

// Times body() as the body of a benchmark; its results count as used.
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
