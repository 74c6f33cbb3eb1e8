// kor::TraceFile: what it opens, when, and what it leaves in place.

#include "services/TraceFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>

#include "Orx.h"

TEST(TraceFile, IsMadeForTheFirstLineUnlessItIsStartedAnew) {
    const TemporaryDirectory folder;
    kor::TraceFile trace;
    trace.Append((folder / "appended").c_str());
    EXPECT_FALSE(std::filesystem::exists(folder / "appended"));
    trace.Write("a line\n");
    EXPECT_EQ(ReadFile(folder / "appended"), "a line\n");
    ASSERT_TRUE(trace.StartAnew((folder / "anew").c_str()));
    EXPECT_TRUE(std::filesystem::exists(folder / "anew"));
    trace.Close();
}

TEST(TraceFile, IsAppendedToByAllThatWriteToIt) {
    const TemporaryDirectory folder;
    const std::string file = folder.Write("trace", "an older trace\n");
    kor::TraceFile one;
    kor::TraceFile other;
    ASSERT_TRUE(one.StartAnew(file.c_str()));
    other.Append(file.c_str());
    one.Write("1\n");
    other.Write("2\n");
    one.Write("3\n");
    other.Close();
    other.Write("4\n");
    one.Close();
    other.Close();
    EXPECT_EQ(ReadFile(file), "1\n2\n3\n4\n");
}

TEST(TraceFile, KeepsWhatAStandardStreamWritesToIt) {
    for (const int mode : {O_APPEND, O_TRUNC}) {
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            const TemporaryDirectory folder;
            const std::string file = folder / "shared";
            const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | mode, 0600);
            const int before = dup(stream);
            dup2(descriptor, stream);
            close(descriptor);
            bool written = write(stream, "before\n", 7) == 7;
            kor::TraceFile trace;
            const bool started = trace.StartAnew(file.c_str());
            trace.Write("a line\n");
            written = write(stream, "after\n", 6) == 6 && written;
            trace.Close();
            dup2(before, stream);
            close(before);
            EXPECT_TRUE(written && started);
            EXPECT_EQ(ReadFile(file), "before\na line\nafter\n");
        }
    }
}

TEST(TraceFile, WaitsForTheReaderOfAPipeWithItsFirstLineOnly) {
    const TemporaryDirectory folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    kor::TraceFile trace;
    ASSERT_TRUE(trace.StartAnew(pipe.c_str()));
    trace.Close();
    ASSERT_TRUE(trace.StartAnew(pipe.c_str()));
    std::string read;
    std::thread reader([&] { read = ReadFile(pipe); });
    trace.Write("a line\n");
    trace.Close();
    reader.join();
    EXPECT_EQ(read, "a line\n");
}
