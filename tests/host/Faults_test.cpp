// Failures outside orx: full disks, files that cannot be written, interrupts, lack of memory.
// Nothing may be left half done.

#include <sys/resource.h>
#include <csignal>

#include <filesystem>

#include "HostTest.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kPoints = 100'000;

// A data set that takes a moment to write.
std::string ManyPoints() {
    std::string data;
    for (int i = 1; i <= kPoints; ++i) {
        data += '#' + std::to_string(i) + "=CARTESIAN_POINT('a point',(1.,2.,3.));\n";
    }
    return ExchangeFile("AUTOMOTIVE_DESIGN", data);
}

// Limits what this process and its children may use, while it exists.
class Limit {
  public:
    Limit(__rlimit_resource resource, rlim_t value) : resource_(resource) {
        getrlimit(resource_, &before_);
        const rlimit limit{value, before_.rlim_max};
        setrlimit(resource_, &limit);
    }
    ~Limit() { setrlimit(resource_, &before_); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

  private:
    __rlimit_resource resource_;
    rlimit before_{};
};

class Faults : public testing::Test {
  protected:
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_ / "out")) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    TemporaryDirectory folder_;
    const std::string source_ = folder_.Write("points.stp", ManyPoints());
    const bool made_ = std::filesystem::create_directory(folder_ / "out");
    const std::string target_ = folder_.Write("out/target.stp", "the old file\n");
};

// ---- Writing

TEST_F(Faults, AFullDiskLeavesTheOldFile) {
    // No room for the first piece, for one in the middle, for the last.
    const auto size = std::filesystem::file_size(source_);
    for (const auto room : {std::uintmax_t{4096}, size / 2, size - 100}) {
        SCOPED_TRACE(room);
        const OrxResult result = [&] {
            const Limit limit(RLIMIT_FSIZE, room);
            return RunOrx({"call", "-m", "m=" + source_, "-o", "m=" + target_, "1"});
        }();
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr(target_ + ": cannot be written: File too large"));
        EXPECT_EQ(ReadFile(target_), "the old file\n");
        EXPECT_THAT(Names(), ElementsAre("target.stp"));
    }
}

TEST_F(Faults, AFullDeviceIsTold) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
    const OrxResult result = RunOrx({"call", "-m", "m=" + source_, "-o", "m=/dev/full", "1"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("/dev/full: cannot be written: No space left on device"));
}

TEST_F(Faults, AFolderInThePlaceOfTheTargetIsTold) {
    const OrxResult result =
        RunOrx({"call", "-m", "m=" + source_, "-o", "m=" + folder_ / "out", "1"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("cannot be written: Is a directory"));
    EXPECT_EQ(ReadFile(target_), "the old file\n");
}

TEST_F(Faults, ATargetThatIsNotThereYetIsMade) {
    std::filesystem::remove(target_);
    const OrxResult result = RunOrx({"call", "-m", "m=" + source_, "-o", "m=" + target_, "1"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(Names(), ElementsAre("target.stp"));
}

TEST_F(Faults, AFolderThatHasGoneIsTold) {
    std::filesystem::remove_all(folder_ / "out");
    const OrxResult result = RunOrx({"call", "-m", "m=" + source_, "-o", "m=" + target_, "1"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("cannot be written: No such file or directory"));
}

// Whether a process has a file in the folder open: the new content of the target.
bool IsWriting(pid_t process, const std::string& folder) {
    std::error_code error;
    std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(process) + "/fd",
                                                    error);
    for (; !error && descriptors != std::filesystem::directory_iterator();
         descriptors.increment(error)) {
        std::error_code gone;
        if (std::filesystem::read_symlink(descriptors->path(), gone).string().find(folder) == 0) {
            return true;
        }
    }
    return false;
}

// Starts orx in a folder, makes it write the target, and sends it a signal while it writes. Returns
// its status.
int InterruptWhileWriting(const std::string& source, const std::string& folder,
                          const std::string& target, int signal) {
    const std::string model = "m=" + source;
    const std::string save = "m=" + target;
    std::string arguments[] = {ORX_PROGRAM, "call", "-m", model, "-o", save, "LET a = 1"};
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    // A shell that starts the tests in the background lets them ignore SIGINT.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t process = 0;
    const int error =
        posix_spawn(&process, ORX_PROGRAM, &actions, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return -1;
    int status = 0;
    while (!IsWriting(process, folder)) {
        if (waitpid(process, &status, WNOHANG) != 0) return status;
    }
    kill(process, signal);
    waitpid(process, &status, 0);
    return status;
}

TEST_F(Faults, AnInterruptWhileWritingLeavesTheOldFileAndNoOther) {
    for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
        SCOPED_TRACE(signal);
        bool interrupted = false;
        // It may finish before the signal arrives.
        for (int attempt = 0; attempt < 10 && !interrupted; ++attempt) {
            std::ofstream(target_) << "the old file\n";
            const int status = InterruptWhileWriting(source_, folder_ / "out", target_, signal);
            EXPECT_THAT(Names(), ElementsAre("target.stp"));
            interrupted = WIFSIGNALED(status) && WTERMSIG(status) == signal;
        }
        EXPECT_TRUE(interrupted);
        EXPECT_EQ(ReadFile(target_), "the old file\n");
    }
}

TEST_F(Faults, AKillWhileANewFileIsWrittenLeavesNothing) {
    const std::string longest(255, 'n');
    for (const std::string& target :
         {folder_ / "out/new.stp", std::string("new.stp"), std::string("./new.stp"),
          std::string("../out/new.stp"), longest}) {
        SCOPED_TRACE(target);
        bool killed = false;
        for (int attempt = 0; attempt < 10 && !killed; ++attempt) {
            std::filesystem::remove_all(folder_ / "out");
            std::filesystem::create_directory(folder_ / "out");
            const int status = InterruptWhileWriting(source_, folder_ / "out", target, SIGKILL);
            killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        }
        EXPECT_TRUE(killed);
        EXPECT_THAT(Names(), ElementsAre());
    }
}

TEST_F(Faults, AFileWithFurtherNamesIsWrittenInPlaceAlone) {
    std::filesystem::create_hard_link(target_, folder_ / "other.stp");
    std::vector<std::string> arguments = {"call", "-m", "m=" + source_, "-o", "m=" + target_, "1"};
    const OrxResult refused = RunOrx(arguments);
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err, HasSubstr("further names (hard links)"));
    EXPECT_EQ(ReadFile(target_), "the old file\n");
    arguments.insert(arguments.begin() + 1, "--in-place");
    const OrxResult written = RunOrx(arguments);
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_THAT(ReadFile(target_), HasSubstr("ISO-10303-21;"));
    EXPECT_EQ(ReadFile(folder_ / "other.stp"), ReadFile(target_));
}

// ---- Tracing

TEST_F(Faults, ATraceThatCannotBeWrittenChangesNoResult) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
    const std::vector<std::string> expressions = {"#1.COORDINATES", "DecodeKey('I000212', 1)",
                                                  "GetAbsPlacement(#1)"};
    std::vector<std::string> call = {"call", "-m", source_};
    call.insert(call.end(), expressions.begin(), expressions.end());
    const OrxResult untraced = RunOrx(call);
    call.insert(call.begin() + 1, {"-t", "/dev/full"});
    const OrxResult traced = RunOrx(call);
    EXPECT_EQ(untraced.status, 0) << untraced.err;
    EXPECT_EQ(traced.status, 0) << traced.err;
    EXPECT_EQ(traced.out, untraced.out);
}

// ---- Memory

TEST_F(Faults, TooLittleMemoryIsToldAndNothingIsHalfRead) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs all the address space there is";
#endif
    // The limit is that of the program alone: this process may need more to start one.
    const auto run = [this](long kilobytes) {
        return RunProgram("/bin/sh",
                          {"-c", R"(ulimit -v "$0" && exec "$@")", std::to_string(kilobytes),
                           ORX_PROGRAM, "call", "-m", "m=" + source_, "-o", "m=" + target_,
                           "#" + std::to_string(kPoints) + ".COORDINATES"});
    };
    constexpr long kMegabyte = 1 << 10;
    constexpr int kNoRoomForTheProgram = 139;  // it is killed before it starts
    constexpr int kNoRoomForLibraries = 127;
    bool loads = false;
    bool failed = false;
    bool succeeded = false;
    // From where the program barely starts, or not even that, to where it has enough.
    for (long memory = 12 * kMegabyte; memory <= 128 * kMegabyte; memory += 3 * kMegabyte / 2) {
        SCOPED_TRACE(memory / kMegabyte);
        const OrxResult result = run(memory);
        if (result.status == kNoRoomForTheProgram && !loads) continue;
        loads = true;
        if (result.status == kNoRoomForLibraries) continue;
        if (result.status == 0) {
            EXPECT_EQ(result.out, "(1.,2.,3.)\n");
            EXPECT_GT(std::filesystem::file_size(target_), std::uintmax_t{kPoints});
            succeeded = true;
            break;
        }
        EXPECT_EQ(result.status, 2) << result.err;
        EXPECT_THAT(result.err, testing::AnyOf(HasSubstr("out of memory"),
                                               HasSubstr("the module cannot be loaded")));
        EXPECT_EQ(ReadFile(target_), "the old file\n");
        EXPECT_THAT(Names(), ElementsAre("target.stp"));
        failed = true;
    }
    EXPECT_TRUE(failed);
    EXPECT_TRUE(succeeded);
}

// ---- Large numbers

TEST_F(Faults, NumbersBeyond32BitsAreReadAndWritten) {
    const std::string file = folder_.Write(
        "great.stp",
        ExchangeFile("AUTOMOTIVE_DESIGN",
                     "#4294967297=PRODUCT('a','',$,());\n#1=PRODUCT('b','',$,());\n"
                     "#999999999999999999=OWN(9223372036854775807,-9223372036854775808,"
                     "4294967297,#4294967297);\n"));
    const OrxResult result =
        RunOrx({"call", "-m", "m=" + file, "-o", "m=" + target_, "#4294967297.ID", "#1.ID",
                "#999999999999999999", "EACH p IN PRODUCT: p.ID"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "'a'\n'b'\n#999999999999999999\n#4294967297\t'a'\n#1\t'b'\n");
    EXPECT_THAT(ReadFile(target_), HasSubstr("#999999999999999999=OWN(9223372036854775807,"
                                             "-9223372036854775808,4294967297,#4294967297);"));
}

// ---- Sanitizers

// Reads memory that has been freed.
int ReadFreed() {
    int* volatile memory = new int(1);
    delete memory;
    return *memory;
}

TEST(Sanitizers, EndAProgramWithAStatusOfTheirOwn) {
#if defined(__SANITIZE_ADDRESS__)
    EXPECT_EXIT(std::exit(ReadFreed()), testing::ExitedWithCode(99), "heap-use-after-free");
#else
    static_cast<void>(ReadFreed);
    GTEST_SKIP() << "there is no sanitizer";
#endif
}

}  // namespace
