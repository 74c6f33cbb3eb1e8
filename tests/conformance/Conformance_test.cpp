// Runs each script of this folder with orx and compares what it prints.
//
// NAME.orx is a script; its first line may contain the options for its run, with file names
// relative to this folder:
//
//     -- options: -m db=parts.stp -n step=AUTOMOTIVE_DESIGN
//
// NAME.expected is the expected standard output. If NAME.errors exists, it is the expected standard
// error output, and the exit status is 1; otherwise that must be empty and the status 0.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "Orx.h"

namespace {

const std::string kFolder = std::string(SOURCE_DIRECTORY) + "/tests/conformance/";

std::vector<std::string> Scripts() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
        if (entry.path().extension() == ".orx") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Conformance : public testing::TestWithParam<std::string> {};

TEST_P(Conformance, PrintsWhatIsExpected) {
    const std::string script = GetParam() + ".orx";
    // Some scripts deliberately pass values of other kinds, of which orx would warn.
    std::vector<std::string> arguments{"run", "--quiet"};
    std::istringstream text(ReadFile(kFolder + script));
    std::string first;
    std::getline(text, first);
    const std::string marker = "-- options: ";
    if (first.rfind(marker, 0) == 0) {
        std::istringstream options(first.substr(marker.size()));
        for (std::string option; options >> option;) arguments.push_back(option);
    }
    arguments.push_back(script);
    const OrxResult result = RunOrx(arguments, "", kFolder);
    EXPECT_EQ(result.out, ReadFile(kFolder + GetParam() + ".expected"));
    const std::string errors = kFolder + GetParam() + ".errors";
    EXPECT_EQ(result.err, ReadFile(errors));
    EXPECT_EQ(result.status, std::filesystem::exists(errors) ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Scripts, Conformance, testing::ValuesIn(Scripts()),
                         [](const auto& script) { return script.param; });

}  // namespace
