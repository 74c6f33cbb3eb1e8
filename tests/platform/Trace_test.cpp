// KORPSNTrace: scopes, lines and the contents of the file.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <string>

#include "KORPSNTrace.h"
#include "Orx.h"
#include "TraceCapture.h"

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TraceLine, OfEachScopeIsItsOwn) {
    TraceCapture capture;
    {
        KORPSNTrace outer("outer ->", 12, 0);
        std::ostream& line = outer.GetLigne().GetStream();
        line << "begun";
        {
            KORPSNTrace inner("inner ->", 12, 0);
            inner.GetLigne().GetStream() << "another" << std::endl;
            inner.Out();
        }
        line << " and ended" << std::endl;
        outer.Out();
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("outer -> {", "   inner -> {", "another",
                                             "   inner -> }", "begun and ended", "outer -> }"));
}

TEST(TraceLine, ShowsTheLineBreaksOfAValue) {
    TraceCapture capture;
    {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << "value >a\nt -> forged\r\nb\n<" << std::endl;
        trace.Out();
        trace.GetLigne().GetStream() << "ends in a break\n" << std::endl;
        trace.Out();
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("t -> {", "value >a\\nt -> forged\\r\\nb\\n<",
                                             "ends in a break\\n", "t -> }"));
}

TEST(TraceLine, EndsInOneBreakAndIsHandedOverOnce) {
    TraceCapture capture;
    {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << "without a break";
        trace.Out();
        trace.Out();
        trace.GetLigne();
        trace.Out();
        trace.GetLigne().GetStream() << "dropped";
        trace.GetLigne().GetStream() << "kept\n";
        trace.Out();
        trace.GetLigne().GetStream() << std::endl;
        trace.Out();
        trace.GetLigne().GetStream() << "never handed over";
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("t -> {", "without a break", "kept", "", "t -> }"));
}

TEST(TraceLine, BeginsWithTheFormatOfANewStream) {
    TraceCapture capture;
    for (int scope = 0; scope < 2; ++scope) {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << 255 << ' ' << 0.1234567 << std::hex << std::setprecision(2)
                                     << std::setfill('*') << std::setw(9) << "" << '\n';
        trace.Out();
        trace.GetLigne().GetStream() << 255 << ' ' << 0.1234567 << std::setw(2) << 1 << '\n';
        trace.Out();
    }
    EXPECT_THAT(capture.Lines(),
                ElementsAre("t -> {", "255 0.123457*********", "255 0.123457 1", "t -> }",  //
                            "t -> {", "255 0.123457*********", "255 0.123457 1", "t -> }"));
}

TEST(TraceLine, IsLentToAScopeThatWasOpenedBelowTheLevel) {
    TraceCapture capture(11);
    {
        KORPSNTrace trace("t ->", 12, 0);
        trace.GetLigne().GetStream() << "a line\n";
        trace.Out();
        EXPECT_EQ(KORPSNTrace::GetIndent(), 0);
    }
    EXPECT_THAT(capture.Lines(), ElementsAre("a line"));
}

TEST(TraceFile, IsEmptiedWhenItIsConfiguredAndAppendedToFromThenOn) {
    const TemporaryDirectory folder;
    const std::string file = folder.Write("trace", "an older trace\n");
    ASSERT_TRUE(KORPSNTrace::Configure(12, file.c_str()));
    EXPECT_EQ(ReadFile(file), "");
    { const KORPSNTrace trace("t ->", 12, 0); }
    folder.Write("more", "");
    std::ofstream(file, std::ios::app) << "of another\n";
    { const KORPSNTrace trace("t ->", 12, 0); }
    KORPSNTrace::Configure(0, nullptr);
    EXPECT_EQ(ReadFile(file), "t -> {\nt -> }\nof another\nt -> {\nt -> }\n");
}

TEST(TraceFile, ThatCannotBeOpenedSwitchesTheTraceOff) {
    const TemporaryDirectory folder;
    for (const std::string& file :
         {folder / "no/such/file", folder.Path(), folder / std::string(5000, 'x')}) {
        EXPECT_FALSE(KORPSNTrace::Configure(12, file.c_str())) << file;
        EXPECT_FALSE(KORPSNTrace::LevelIsActive(12)) << file;
    }
    KORPSNTrace::Configure(0, nullptr);
}

namespace {

// A terminal that records what is written to it. It has no file if the machine has no terminals.
class PseudoTerminal {
  public:
    PseudoTerminal() : main_(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (main_ < 0 || grantpt(main_) != 0 || unlockpt(main_) != 0) return;
        if (const char* file = ptsname(main_)) file_ = file;
        other_ = open(file_.c_str(), O_RDWR | O_NOCTTY);
        termios settings{};
        if (other_ < 0 || tcgetattr(other_, &settings) != 0) {
            file_.clear();
            return;
        }
        cfmakeraw(&settings);
        tcsetattr(other_, TCSANOW, &settings);
    }
    ~PseudoTerminal() {
        if (other_ >= 0) close(other_);
        if (main_ >= 0) close(main_);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    const std::string& File() const { return file_; }
    int Descriptor() const { return other_; }

    // The output up to a text.
    std::string Until(const std::string& end) const {
        std::string shown;
        char piece[256];
        pollfd waiting{main_, POLLIN, 0};
        while (!shown.ends_with(end) && poll(&waiting, 1, 5000) == 1) {
            const ssize_t count = read(main_, piece, sizeof piece);
            if (count <= 0) break;
            shown.append(piece, static_cast<std::size_t>(count));
        }
        return shown;
    }

  private:
    int main_;
    int other_ = -1;
    std::string file_;
};

// C0, DEL and C1 controls, a letter of ISO 8859-1, and the bytes of U+202E as single characters.
void WriteControls() {
    KORPSNTrace trace("t ->", 12, 0);
    trace.GetLigne().GetStream() << "\x1B]0;title\a\x7F\x9B"
                                    "2J\xE9\t\xE2\x80\xAE";
    trace.Out();
}

constexpr char kShown[] =
    "t -> {\n\\X\\1B]0;title\\X\\07\\X\\7F\\X\\9B"
    "2J\u00E9\\X\\09\u00E2\\X\\80\u00AE\nt -> }\n";

}  // namespace

TEST(TraceOnATerminal, ShowsNoControlCharacterRaw) {
    const PseudoTerminal terminal;
    if (terminal.File().empty()) GTEST_SKIP() << "no pseudo-terminals here";
    ASSERT_TRUE(KORPSNTrace::Configure(12, terminal.File().c_str()));
    WriteControls();
    KORPSNTrace::Configure(0, nullptr);
    EXPECT_EQ(terminal.Until("t -> }\n"), kShown);
}

TEST(TraceOnATerminal, ShowsNoneOnTheStandardErrorStreamEither) {
    const PseudoTerminal terminal;
    if (terminal.File().empty()) GTEST_SKIP() << "no pseudo-terminals here";
    const int before = dup(STDERR_FILENO);
    dup2(terminal.Descriptor(), STDERR_FILENO);
    KORPSNTrace::Configure(12, nullptr);
    WriteControls();
    KORPSNTrace::Configure(0, nullptr);
    dup2(before, STDERR_FILENO);
    close(before);
    EXPECT_EQ(terminal.Until("t -> }\n"), kShown);
}

TEST(TraceInAFile, HasEveryCharacterAsItIs) {
    TraceCapture capture;
    WriteControls();
    EXPECT_THAT(capture.Lines(), ElementsAre("t -> {",
                                             "\x1B]0;title\a\x7F\x9B"
                                             "2J\xE9\t\xE2\x80\xAE",
                                             "t -> }"));
}
