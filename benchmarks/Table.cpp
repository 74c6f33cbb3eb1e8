// The table of the benchmarks.

#include "Table.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

namespace bench {

class Table::Reporter final : public benchmark::BenchmarkReporter {
  public:
    explicit Reporter(Table& table) : table_(table) {}

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            const std::string name = run.benchmark_name();
            Row& row = table_.rows_.at(std::stoul(name));
            const bool isFloor = name.find("/floor/") != std::string::npos;
            const auto measurement = std::find_if(
                table_.measurements_.begin(), table_.measurements_.end(), [&](const auto& m) {
                    return &table_.rows_[m.row] == &row && m.isFloor == isFloor;
                });
            const double time = run.GetAdjustedCPUTime() / measurement->units;
            if (isFloor) {
                row.floor = row.floor.has_value() ? std::min(*row.floor, time) : time;
            } else {
                row.time = row.time > 0 ? std::min(row.time, time) : time;
            }
        }
    }

  private:
    Table& table_;
};

void Table::Run() {
    std::vector<std::string> arguments = {"orx-bench", "--benchmark_min_time=0.02",
                                          "--benchmark_repetitions=5"};
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    int argc = static_cast<int>(argv.size());
    benchmark::Initialize(&argc, argv.data());
    Reporter reporter(*this);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
}

namespace {

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 10 ? "%.2f" : value < 1000 ? "%.1f" : "%.0f", value);
    return text;
}

std::string Text(const Target& target, const std::string& unit) {
    std::string text;
    if (target.ratio) text = "ratio " + Number(*target.ratio);
    if (target.time) text += (text.empty() ? "" : ", ") + Number(*target.time) + ' ' + unit;
    return text;
}

}  // namespace

void Table::Print() const {
    std::string section;
    for (const Row& row : rows_) {
        if (row.section != section) {
            section = row.section;
            std::printf("\n### %s\n\n", section.c_str());
            std::printf("| %-52s | %10s | %-12s | %9s | %6s | %-28s |\n", "", "time", "unit",
                        "floor", "ratio", "target (at most)");
            std::printf("|%s|%s:|%s|%s:|%s:|%s|\n", std::string(54, '-').c_str(),
                        std::string(11, '-').c_str(), std::string(14, '-').c_str(),
                        std::string(10, '-').c_str(), std::string(7, '-').c_str(),
                        std::string(30, '-').c_str());
        }
        const std::string target = Text(row.target, row.unit) + (row.IsMet() ? "" : " **missed**");
        std::printf("| %-52s | %10s | %-12s | %9s | %6s | %-28s |\n", row.name.c_str(),
                    Number(row.time).c_str(), row.unit.c_str(),
                    row.floor ? Number(*row.floor).c_str() : "",
                    row.floor ? Number(*row.Ratio()).c_str() : "", target.c_str());
    }
}

void Table::WriteJson(const std::string& path) const {
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const Row& row : rows_) {
        nlohmann::ordered_json json = {
            {"section", row.section}, {"name", row.name}, {"unit", row.unit}, {"time", row.time}};
        if (row.floor) json["floor"] = *row.floor;
        if (row.floor) json["ratio"] = *row.Ratio();
        if (row.target.ratio) json["targetRatio"] = *row.target.ratio;
        if (row.target.time) json["targetTime"] = *row.target.time;
        json["met"] = row.IsMet();
        rows.push_back(std::move(json));
    }
    std::ofstream(path) << rows.dump(1) << '\n';
}

}  // namespace bench
