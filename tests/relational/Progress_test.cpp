// What a terminal shows while orx waits for a database and then reads from it or saves to it.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pty.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "Places.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int kCount = 5'000;

// kCount parts, and as many links.
std::string PartsAndLinks() {
    std::string data;
    for (int i = 1; i <= kCount; ++i) {
        const std::string part = '#' + std::to_string(2 * i);
        const std::string link = '#' + std::to_string(2 * i + 1);
        data += part + "=PART_OBJECT('p',$,$,$,$,$,$,$,$,$);" + link + "=PART_LINK('l'," + part +
                ",$,$,$,$,$);";
    }
    return data;
}

// Locks an SQLite file.
class Lock {
  public:
    explicit Lock(const std::string& file) {
        sqlite3_open(file.c_str(), &database_);
        sqlite3_exec(database_, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    }
    ~Lock() { sqlite3_close(database_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    sqlite3* database_ = nullptr;
};

bool HasOpen(pid_t process, const std::string& file) {
    std::error_code error;
    const std::string descriptors = "/proc/" + std::to_string(process) + "/fd";
    for (const auto& entry : std::filesystem::directory_iterator(descriptors, error)) {
        if (std::filesystem::read_symlink(entry.path(), error) == file) return true;
    }
    return false;
}

// What orx writes to standard error, a terminal or a pipe, when it has to wait for the database for
// more than a second.
std::string Shown(const std::vector<std::string>& arguments, const std::string& file,
                  bool onTerminal) {
    auto lock = std::make_unique<Lock>(file);
    int ours = -1;
    int theirs = -1;
    if (onTerminal) {
        if (openpty(&ours, &theirs, nullptr, nullptr, nullptr) != 0) return "no terminal";
    } else {
        int ends[2];
        if (pipe(ends) != 0) return "no pipe";
        ours = ends[0];
        theirs = ends[1];
    }
    const pid_t process = fork();
    if (process == 0) {
        dup2(theirs, STDERR_FILENO);
        close(ours);
        close(theirs);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        std::vector<const char*> words{"orx"};
        for (const std::string& argument : arguments) words.push_back(argument.c_str());
        words.push_back(nullptr);
        execv(ORX_PROGRAM, const_cast<char* const*>(words.data()));
        _exit(127);
    }
    close(theirs);
    for (int i = 0; i < 1'000 && !HasOpen(process, file); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1'300));
    lock.reset();
    std::string shown;
    char piece[4096];
    for (ssize_t count = 0; (count = read(ours, piece, sizeof piece)) > 0;) {
        shown.append(piece, static_cast<std::size_t>(count));
    }
    close(ours);
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_EQ(status, 0) << shown;
    return shown;
}

TEST(Progress, IsShownOnATerminalAfterASecond) {
    const TemporaryDirectory files;
    const std::string database = files / "parts.db";
    const std::string name = "sqlite:" + database;
    const std::string text = exchange::ToExchangeText(DataSetOf("cdma", PartsAndLinks()));
    const std::string file = files.Write("parts.stp", text);
    ASSERT_THAT(Save(DataSetOf("cdma", "#1=PART_OBJECT($,$,$,$,$,$,$,$,$,$);"), name), IsEmpty());

    // 4096 of 10,000 instances.
    const std::string saving = Shown({"copy", file, name}, database, true);
    if (saving == "no terminal") GTEST_SKIP() << "there are no pseudo-terminals";
    EXPECT_THAT(saving, HasSubstr("\rsaving " + name + ": 4096 instances (40%)"));
    EXPECT_TRUE(saving.ends_with("\r\033[K")) << saving;
    EXPECT_EQ(Open(name).Model().InstanceCount(), 2 * kCount);

    const std::string reading = Shown({"describe", name}, database, true);
    EXPECT_THAT(reading, HasSubstr("\rreading " + name + ": 4096 instances"));
    EXPECT_TRUE(reading.ends_with("\r\033[K")) << reading;
}

TEST(Progress, IsForTerminalsAlone) {
    const TemporaryDirectory files;
    const std::string database = files / "parts.db";
    const std::string name = "sqlite:" + database;
    const std::string text = exchange::ToExchangeText(DataSetOf("cdma", PartsAndLinks()));
    const std::string file = files.Write("parts.stp", text);
    ASSERT_THAT(Save(DataSetOf("cdma", ""), name), IsEmpty());
    EXPECT_EQ(Shown({"copy", file, name}, database, false), "");
}

// If the callback throws, the changes are rolled back.
TEST(Progress, MayEndASave) {
    const TemporaryDirectory files;
    const std::string name = "sqlite:" + files / "parts.db";
    ASSERT_THAT(Save(DataSetOf("cdma", "#1=PART_OBJECT('a',$,$,$,$,$,$,$,$,$);"), name), IsEmpty());
    const std::string before = Open(name).Text();
    struct Ended {};
    exchange::Messages messages;
    const exchange::DataSet dataSet = DataSetOf("cdma", PartsAndLinks());
    EXPECT_THROW(relational::Save(dataSet, name, messages,
                                  {false, [](std::uint64_t, std::uint64_t) { throw Ended(); }}),
                 Ended);
    EXPECT_EQ(Open(name).Text(), before);
    EXPECT_THAT(Save(dataSet, name), IsEmpty());
    EXPECT_THAT(Open(name).Text(), Not(before));
}

}  // namespace
