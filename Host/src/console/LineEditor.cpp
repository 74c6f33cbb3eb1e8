// Line input, with editing on terminals.

#include "console/LineEditor.h"

#include <histedit.h>
#include <pwd.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>
#include <vector>

#include "console/Console.h"
#include "console/Printable.h"
#include "model/NameTable.h"

namespace host {

namespace {

// The common prefix of the candidates, in the spelling of the first.
std::string CommonStart(const std::vector<std::string>& names) {
    std::string common = names.front();
    for (const std::string& name : names) {
        const std::string folded = kor::Folded(name);
        const std::string other = kor::Folded(common);
        const auto end = std::mismatch(other.begin(), other.end(), folded.begin(), folded.end());
        auto size = static_cast<std::size_t>(end.first - other.begin());
        // Whole characters.
        while (size < common.size() && !BeginsCharacter(common[size])) --size;
        common.resize(size);
    }
    return common;
}

// In columns over the width of the terminal.
void List(const std::vector<std::string>& names) {
    constexpr std::size_t kMost = 200;
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    const std::size_t width = known ? size.ws_col : 80;
    const std::size_t count = std::min(names.size(), kMost);
    std::size_t longest = 0;
    for (std::size_t i = 0; i < count; ++i) longest = std::max(longest, DisplayWidth(names[i]));
    const std::size_t columns = std::max<std::size_t>(1, width / (longest + 2));
    const std::size_t rows = (count + columns - 1) / columns;
    std::cout << '\n';
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t i = row; i < count; i += rows) {
            std::cout << Printable(names[i]);
            if (i + rows < count)
                std::cout << std::string(longest + 2 - DisplayWidth(names[i]), ' ');
        }
        std::cout << '\n';
    }
    if (count < names.size()) std::cout << "and " << names.size() - count << " more\n";
    std::cout.flush();
}

// While a line is edited, Ctrl-C is an ordinary key; while orx works, it interrupts.
class KeyAsAnyOther {
  public:
    explicit KeyAsAnyOther(int key) {
        known_ = tcgetattr(STDIN_FILENO, &before_) == 0;
        if (!known_) return;
        termios without = before_;
        without.c_cc[key] = _POSIX_VDISABLE;
        tcsetattr(STDIN_FILENO, TCSADRAIN, &without);
    }
    ~KeyAsAnyOther() {
        if (known_) tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
    }
    KeyAsAnyOther(const KeyAsAnyOther&) = delete;
    KeyAsAnyOther& operator=(const KeyAsAnyOther&) = delete;

  private:
    termios before_{};
    bool known_ = false;
};

}  // namespace

class LineEditor::Terminal {
  public:
    explicit Terminal(Complete complete)
        : complete_(std::move(complete)),
          historyFile_(HistoryFile()),
          history_(history_init()),
          editor_(el_init("orx", stdin, stdout, stderr)) {
        // Characters beyond ASCII are typed as UTF-8, whatever the locale.
        if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
            std::setlocale(LC_CTYPE, "C.UTF-8");
        }
        HistEvent event;
        history(history_, &event, H_SETSIZE, 1000);
        history(history_, &event, H_SETUNIQUE, 1);
        if (!historyFile_.empty()) history(history_, &event, H_LOAD, historyFile_.c_str());
        el_set(editor_, EL_CLIENTDATA, this);
        el_set(editor_, EL_PROMPT, &Prompt);
        el_set(editor_, EL_EDITOR, "emacs");
        el_set(editor_, EL_SIGNAL, 1);
        el_set(editor_, EL_HIST, history, history_);
        el_source(editor_, nullptr);
        // The names must outlive the editor: the other call would leak copies.
        el_wset(editor_, EL_ADDFN, L"orx-complete", L"completes a name", &CompleteName);
        el_wset(editor_, EL_ADDFN, L"orx-cancel", L"cancels the line", &Cancel);
        el_set(editor_, EL_BIND, "^I", "orx-complete", nullptr);
        el_set(editor_, EL_BIND, "^C", "orx-cancel", nullptr);
        el_set(editor_, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    }
    ~Terminal() {
        el_end(editor_);
        history_end(history_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    Result Read(const std::string& prompt, std::string& line, bool remembered) {
        prompt_ = prompt;
        cancelled_ = false;
        std::cout.flush();
        int count = 0;
        const KeyAsAnyOther interrupt(VINTR);
        // Key bindings are set before the prompt appears.
        el_set(editor_, EL_PREP_TERM, 1);
        const char* text = el_gets(editor_, &count);
        if (cancelled_) {
            std::cout << "^C" << std::endl;
            return Result::Cancelled;
        }
        if (count < 0) Refuse("the terminal cannot be read");
        if (text == nullptr || count == 0) {
            std::cout << std::endl;
            return Result::End;
        }
        line.assign(text, static_cast<std::size_t>(count));
        while (line.ends_with('\n') || line.ends_with('\r')) line.pop_back();
        if (remembered && line.find_first_not_of(" \t") != std::string::npos) Remember(line);
        return Result::Line;
    }

  private:
    static Terminal& Of(EditLine* editor) {
        void* self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<Terminal*>(self);
    }

    static char* Prompt(EditLine* editor) { return Of(editor).prompt_.data(); }

    static unsigned char Cancel(EditLine* editor, int) {
        Of(editor).cancelled_ = true;
        return CC_NEWLINE;
    }

    static unsigned char CompleteName(EditLine* editor, int) {
        const LineInfo& info = *el_line(editor);
        const std::string line(info.buffer, info.cursor);
        const auto [start, candidates] = Of(editor).complete_(line);
        if (candidates.empty()) return CC_ERROR;
        const std::string typed = line.substr(start);
        const std::string common = CommonStart(candidates);
        const bool goesOn = common.size() > typed.size() || candidates.size() == 1;
        if (goesOn) {
            el_deletestr(editor, static_cast<int>(Characters(typed)));
            el_insertstr(editor, common.c_str());
            return CC_REFRESH;
        }
        List(candidates);
        return CC_REDISPLAY;
    }

    // Saved at once, so that the history survives however the program ends.
    void Remember(const std::string& line) {
        HistEvent event;
        history(history_, &event, H_ENTER, line.c_str());
        if (historyFile_.empty()) return;
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(historyFile_).parent_path(),
                                            ignored);
        history(history_, &event, H_SAVE, historyFile_.c_str());
    }

    const Complete complete_;
    const std::string historyFile_;
    History* const history_;
    EditLine* const editor_;
    std::string prompt_;
    bool cancelled_ = false;
};

LineEditor::LineEditor(Complete complete) {
    if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) {
        terminal_ = std::make_unique<Terminal>(std::move(complete));
    }
}

LineEditor::~LineEditor() = default;

LineEditor::Result LineEditor::Read(const std::string& prompt, std::string& line) {
    if (terminal_ != nullptr) return terminal_->Read(prompt, line, true);
    // A line that cannot be read completely is not the end of input: memory ran out.
    std::cin.exceptions(std::ios::badbit);
    if (std::getline(std::cin, line)) return Result::Line;
    if (std::ferror(stdin)) Refuse("the standard input cannot be read");
    return Result::End;
}

bool LineEditor::Ask(const std::string& question) {
    std::string answer;
    const Result result = terminal_->Read(question, answer, false);
    return result == Result::End || kor::Folded(answer) == "Y" || kor::Folded(answer) == "YES";
}

namespace {

// Whether the existing part of a path belongs to the user.
bool IsOwn(std::filesystem::path path) {
    struct stat status {};
    while (stat(path.c_str(), &status) != 0) {
        if (path == path.parent_path()) return false;
        path = path.parent_path();
    }
    return status.st_uid == geteuid();
}

}  // namespace

std::string HistoryFile() {
    // A relative path is ignored.
    const auto absolute = [](const char* variable) {
        const char* value = std::getenv(variable);
        return value != nullptr && *value == '/' ? std::string(value) : "";
    };
    if (const std::string state = absolute("XDG_STATE_HOME"); !state.empty()) {
        return IsOwn(state + "/orx/history") ? state + "/orx/history" : "";
    }
    std::string home = absolute("HOME");
    const passwd* user = home.empty() ? getpwuid(geteuid()) : nullptr;
    if (user != nullptr && user->pw_dir != nullptr) home = user->pw_dir;
    const std::string file = home + "/.local/state/orx/history";
    return !home.empty() && IsOwn(file) ? file : "";
}

}  // namespace host
