// The trace and the module when processes and threads start, end and have children: each test runs
// programs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Orx.h"

using testing::HasSubstr;

namespace {

class Process : public testing::Test {
  protected:
    // Runs a shell command in its own folder, for at most a minute.
    OrxResult Run(const std::string& command, const std::string& variables = "") {
        const int status = std::system(("cd " + folder.Path() + " && " + variables +
                                        " timeout 60 " + command + " > out 2> err < /dev/null")
                                           .c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                ReadFile(folder / "out"), ReadFile(folder / "err")};
    }
    OrxResult RunChild(const std::string& action, const std::string& variables = "") {
        return Run(std::string(CHILD_PROGRAM) + " " + action, variables);
    }
    std::string Orx(const std::string& arguments) {
        return std::string(ORX_PROGRAM) + " " + arguments;
    }
    std::string TraceFile() const { return ReadFile(folder / "trace"); }

    const TemporaryDirectory folder;
    const std::string kTraced = "KOR_TRACE=12 KOR_TRACE_FILE=trace";
};

// The lines of a scope in the child program.
std::string Scope(const std::string& label) {
    return label + " {\n   " + label + " a line that is longer than what a text holds in itself\n" +
           label + " }\n";
}

const char* const kCall = "call 'GetMemberCount((1.,2.))'";
const std::string kCallTrace =
    "SdaiPrimitiveH GetMemberCount -> {\n"
    "   SdaiPrimitiveH GetMemberCount -> Taille2\n"
    "SdaiPrimitiveH GetMemberCount -> }\n";

// The same as traced by `orx -t`: below the statement.
std::string Told(const std::string& place) {
    return "== " + place + " GetMemberCount((1.,2.))\n" + kCallTrace;
}

void ExpectClean(const OrxResult& run) {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
}

}  // namespace

// ---- The end of threads, processes and of the module

TEST_F(Process, TracesFromEndingThreadsAndStaticDestructors) {
    for (const std::string file : {"trace", ""}) {
        const OrxResult run = RunChild("end", "KOR_TRACE=12 KOR_TRACE_FILE=" + file);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(file.empty() ? run.err : TraceFile(),
                  Scope("main ->") + Scope("in thread ->") + Scope("thread ->") +
                      Scope("process ->") + Scope("very end ->"));
    }
}

TEST_F(Process, ForgetsVersionsInTheDestructorOfASingleton) {
    const OrxResult run = RunChild("versions");
    ExpectClean(run);
    // By then the versions seen are gone with the module, and the families with document
    // management.
    const std::string atEnd = "IsNewer FALSE\nIsVersion none\nRemoveValueVersion TRUE\n";
    EXPECT_EQ(run.out, "IsVersion older\nIsVersion older\nIsNewer TRUE\n" + atEnd + atEnd);
    ExpectClean(RunChild("versions", kTraced));
    EXPECT_THAT(TraceFile(), HasSubstr("SdaiPrimitiveH RemoveValueVersion -> Taille DMList : 0\n"));
}

TEST_F(Process, LeavesNothingWhenTheModuleIsUnloaded) {
    const OrxResult run = RunChild("unload");
    ExpectClean(run);
    EXPECT_EQ(run.out, "IsVersion older\nIsVersion older\nIsVersion newer\nIsVersion newer\n");
}

TEST_F(Process, GivesPlacementsUntilItEnds) {
    const OrxResult run = RunChild("place");
    ExpectClean(run);
    const std::string placed = "12 values\nGetPlacement1 done\nGetPlacement2 done\n";
    EXPECT_EQ(run.out, placed + placed + placed);
}

TEST_F(Process, LeavesNothingForThreadsThatOutliveTheModule) {
    const OrxResult run = RunChild("unload-first");
    ExpectClean(run);
    std::string expected;
    for (int i = 0; i < 11; ++i) expected += "12 values\n";
    EXPECT_EQ(run.out, expected);
}

// ---- The file of the trace

TEST_F(Process, LeavesTheTraceFileAloneUntilALineIsWritten) {
    ExpectClean(Run(Orx("--version"), kTraced));
    ExpectClean(Run(Orx(kCall), "KOR_TRACE=11 KOR_TRACE_FILE=trace"));
    EXPECT_FALSE(std::filesystem::exists(folder / "trace"));
    folder.Write("trace", "an older trace\n");
    ExpectClean(Run(Orx("--version"), kTraced));
    ExpectClean(Run(Orx("functions"), kTraced));
    ExpectClean(Run(Orx(kCall), "KOR_TRACE=11 KOR_TRACE_FILE=trace"));
    EXPECT_EQ(TraceFile(), "an older trace\n");
}

TEST_F(Process, AppendsToTheTraceFileOfTheEnvironment) {
    folder.Write("trace", "an older trace\n");
    ExpectClean(Run(Orx(kCall), kTraced));
    ExpectClean(Run(Orx(kCall), kTraced));
    EXPECT_EQ(TraceFile(), "an older trace\n" + kCallTrace + kCallTrace);
}

TEST_F(Process, StartsTheTraceFileOfTheCommandLineAnew) {
    folder.Write("trace", "an older trace\n");
    for (int run = 0; run < 2; ++run) {
        ExpectClean(Run(Orx(std::string(kCall) + " 'GetMemberCount((1.,2.))' -t trace")));
        EXPECT_EQ(TraceFile(), Told("1:1") + Told("2:1"));
    }
    // The option takes precedence over the variables.
    folder.Write("other", "an older trace\n");
    ExpectClean(Run(Orx(std::string(kCall) + " -t trace"), "KOR_TRACE=12 KOR_TRACE_FILE=other"));
    EXPECT_EQ(TraceFile(), Told("1:1"));
    EXPECT_EQ(ReadFile(folder / "other"), "an older trace\n");
}

TEST_F(Process, SharesTheTraceFileWithItsChildren) {
    ExpectClean(RunChild("children", kTraced));
    EXPECT_EQ(TraceFile(), Scope("parent ->") + Scope("forked ->") + Scope("started ->") +
                               Scope("parent again ->"));
}

TEST_F(Process, WritesWholeLinesBesideOtherProcesses) {
    constexpr int kPrograms = 4;
    constexpr int kCalls = 500;
    std::string script;
    for (int call = 0; call < kCalls; ++call) script += "GetMemberCount((1.,2.))\n";
    folder.Write("script.orx", script);
    std::string programs;
    for (int i = 0; i < kPrograms; ++i) programs += Orx("run script.orx") + " & ";
    ExpectClean(Run("sh -c '" + programs + "wait'", kTraced));
    std::map<std::string, int> expected;
    std::istringstream call(kCallTrace);
    for (std::string line; std::getline(call, line);) expected[line] = kPrograms * kCalls;
    std::map<std::string, int> lines;
    std::istringstream trace(TraceFile());
    for (std::string line; std::getline(trace, line);) ++lines[line];
    EXPECT_EQ(lines, expected);
}

TEST_F(Process, TakesTheTraceFileFromWhereItStarted) {
    ExpectClean(RunChild("elsewhere", kTraced));
    EXPECT_EQ(TraceFile(), Scope("elsewhere ->"));
}

TEST_F(Process, WritesResultsAndTraceIntoOneStandardOutput) {
    for (const std::string option : {"", " -t /dev/stdout"}) {
        const OrxResult run = Run(Orx(kCall + option), "KOR_TRACE=12 KOR_TRACE_FILE=/dev/stdout");
        ExpectClean(run);
        EXPECT_EQ(run.out, (option.empty() ? kCallTrace : Told("1:1")) + "2\n");
    }
    // Existing contents of the file are kept.
    folder.Write("kept", "first\n");
    ExpectClean(
        Run("sh -c '" + Orx("call \"GetMemberCount((1.,2.))\" -t /dev/stdout") + " >> kept'"));
    EXPECT_EQ(ReadFile(folder / "kept"), "first\n" + Told("1:1") + "2\n");
}

TEST_F(Process, DoesNotWaitForTheReaderOfAPipeWhereItTracesNothing) {
    ASSERT_EQ(mkfifo((folder / "trace").c_str(), 0600), 0);
    ExpectClean(Run(Orx("--version"), kTraced));
    ExpectClean(Run(Orx(kCall), "KOR_TRACE=11 KOR_TRACE_FILE=trace"));
}

TEST_F(Process, TracesIntoAPipe) {
    ASSERT_EQ(mkfifo((folder / "trace").c_str(), 0600), 0);
    for (const std::string& option : {std::string(), std::string(" -t trace")}) {
        std::string read;
        std::thread reader([&] { read = TraceFile(); });
        const OrxResult run = Run(Orx(kCall + option), option.empty() ? kTraced : "");
        reader.join();
        ExpectClean(run);
        EXPECT_EQ(run.out, "2\n");
        EXPECT_EQ(read, option.empty() ? kCallTrace : Told("1:1"));
    }
}

TEST_F(Process, GoesOnWhenTheReaderOfAPipeHasGone) {
    ASSERT_EQ(mkfifo((folder / "trace").c_str(), 0600), 0);
    std::string script;
    std::string results;
    for (int call = 0; call < 2000; ++call) {
        script += "GetMemberCount((1.,2.))\n";
        results += "2\n";
    }
    folder.Write("script.orx", script);
    std::thread reader([&] { close(open((folder / "trace").c_str(), O_RDONLY | O_CLOEXEC)); });
    const OrxResult run = Run(Orx("run script.orx"), kTraced);
    reader.join();
    ExpectClean(run);
    EXPECT_EQ(run.out, results);
}

// ---- The level

TEST_F(Process, TakesAWholeNumberAsTheTraceLevel) {
    for (const char* level : {"12", " 12", "+12", "12 ", " +12 ", "99999999999999999999"}) {
        const OrxResult run = Run(Orx(kCall), "KOR_TRACE='" + std::string(level) + "'");
        EXPECT_EQ(run.out, "2\n") << level;
        EXPECT_EQ(run.err, kCallTrace) << level;
    }
    for (const char* level : {"", "11", " +11", "-12", "-99999999999999999999"}) {
        const OrxResult run = Run(Orx(kCall), "KOR_TRACE='" + std::string(level) + "'");
        EXPECT_EQ(run.out, "2\n") << level;
        EXPECT_EQ(run.err, "") << level;
    }
}

TEST_F(Process, SaysOnceThatATraceLevelIsNoNumber) {
    for (const std::string level : {"12x", "twelve", "+-12", "1.5", "- 12", "0x0C", " ", "+"}) {
        const OrxResult run = Run(Orx(kCall), "KOR_TRACE='" + level + "'");
        EXPECT_EQ(run.status, 0) << level;
        EXPECT_EQ(run.out, "2\n") << level;
        EXPECT_EQ(run.err,
                  "KOR_TRACE=" + level + ": a trace level is a whole number; the trace is off\n");
    }
}
