// Reads an exchange file, and for each line of standard input computes the placements of all its
// occurrences, by GetAbsPlacement as an engine calls it. Prints the seconds of processor time of
// each round, and the sum of the numbers, which must equal that of another program.
//
//     measure-placements FILE

#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "Exchange.h"
#include "Modules.h"

namespace {

using namespace sdai_names;

constexpr long kPlacement = 12;

std::vector<double> Placements(const SdaiModel& model) {
    static auto* const ask =
        bench::TheModule().Find<SdaiPrimitiveH(const SdaiPrimitiveH&)>("GetAbsPlacement");
    const SdaiAggrInstance* links = model.GetEntityExtent("NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name);
    std::vector<double> numbers(static_cast<std::size_t>(links->GetMemberCount() * kPlacement));
    double* to = numbers.data();
    for (long i = 0; i < links->GetMemberCount(); ++i) {
        const SdaiPrimitiveH placement = ask(SdaiPrimitiveH(links->GetInstanceMember(i)));
        const SdaiAggrInstance* members = placement;
        for (long j = 0; j < kPlacement; ++j) *to++ = members->GetRealMember(j);
    }
    return numbers;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: measure-placements FILE\n");
        return 2;
    }
    exchange::Messages messages;
    const exchange::DataSet dataSet = exchange::ReadDataSet(argv[1], {}, {}, messages);
    if (dataSet.model == nullptr) {
        std::fprintf(stderr, "measure-placements: %s\n",
                     messages.Errors().at(0).ToString().c_str());
        return 2;
    }
    while (std::getchar() != EOF) {
        const std::clock_t start = std::clock();
        const std::vector<double> numbers = Placements(*dataSet.model);
        const auto ticks = static_cast<double>(std::clock() - start);
        double sum = 0;
        for (const double number : numbers) sum += number;
        std::printf("%.9f %.17g\n", ticks / CLOCKS_PER_SEC, sum);
        std::fflush(stdout);
    }
}
