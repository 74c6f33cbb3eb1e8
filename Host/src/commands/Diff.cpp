// orx diff: the differences between two data sets.

#include <cstdint>
#include <iostream>
#include <string>

#include "Comparison.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"

namespace host {

namespace {

void PrintAsJson(const exchange::Difference& difference) {
    Json json;
    json.Object([&] {
        json.Name("type").Text(difference.entity);
        json.Name("label").Text(difference.label);
        if (!difference.attribute.empty()) json.Name("attribute").Text(difference.attribute);
        json.Name("left").Text(difference.left);
        json.Name("right").Text(difference.right);
    });
    std::cout << json.Line() << '\n';
}

}  // namespace

int Diff(const Options& options) {
    Session session;
    Load(session, options);
    const NamedModel& left = session.Models()[0];
    const NamedModel& right = session.Models()[1];
    const auto print = [&](const exchange::Difference& difference) {
        if (options.json) return PrintAsJson(difference);
        std::string line = difference.entity + ' ' + difference.label + ": ";
        if (difference.attribute.empty()) {
            const bool isLeft = difference.right.empty();
            line += "only in " + ReadableName(isLeft ? left.file : right.file) + " (" +
                    (isLeft ? difference.left : difference.right) + ')';
        } else {
            line += difference.attribute + ' ' + difference.left + " against " + difference.right;
        }
        std::cout << Readable(line) << '\n';
    };
    const std::uint64_t differences =
        exchange::CompareModels(left.Model(), right.Model(), options.tolerance, print);
    if (!Flush()) return kUnusable;
    return differences == 0 ? kDone : kDifferent;
}

}  // namespace host
