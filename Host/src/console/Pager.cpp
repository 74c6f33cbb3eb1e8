// Long output on a terminal, through $PAGER.

#include "console/Pager.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

#include "script/Interrupt.h"

namespace host {

namespace {

// The command of the pager; empty for none.
std::string PagerCommand() {
    if (const char* pager = std::getenv("PAGER")) return pager;
    const char* path = std::getenv("PATH");
    for (const char* pager : {"less", "more"}) {
        std::string_view folders = path != nullptr ? path : "";
        while (!folders.empty()) {
            const std::string_view folder = folders.substr(0, folders.find(':'));
            folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
            if (access((std::string(folder) + '/' + pager).c_str(), X_OK) == 0) return pager;
        }
    }
    return "";
}

std::size_t TerminalLines() {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row != 0;
    return known ? size.ws_row : 24;
}

}  // namespace

class Pager::Buffer final : public std::streambuf {
  public:
    explicit Buffer(std::string command)
        : command_(std::move(command)),
          lines_(TerminalLines() - 1),
          terminal_(std::cout.rdbuf(this)),
          pipeSignal_(std::signal(SIGPIPE, SIG_IGN)) {}
    ~Buffer() override {
        std::cout.rdbuf(terminal_);
        if (pipe_ != nullptr) {
            pclose(pipe_);
        } else {
            std::cout << waiting_ << std::flush;
        }
        std::signal(SIGPIPE, pipeSignal_);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    bool WasLeft() const { return left_; }

  private:
    int_type overflow(int_type c) override {
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            const char character = traits_type::to_char_type(c);
            Take({&character, 1});
        }
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        Take({characters, static_cast<std::size_t>(count)});
        return count;
    }

    void Take(std::string_view text) {
        if (left_) return;
        if (pipe_ != nullptr) return Write(text);
        for (const char c : text) lines_ -= c == '\n' && lines_ != 0 ? 1 : 0;
        waiting_ += text;
        if (lines_ != 0) return;
        Start();
        Write(waiting_);
    }

    // A pager that cannot be started counts as one that was left at once.
    void Start() {
        setenv("LESS", "FRX", 0);
        std::cerr.flush();
        pipe_ = popen(command_.c_str(), "we");
    }

    void Write(std::string_view text) {
        const bool written = pipe_ != nullptr &&
                             std::fwrite(text.data(), 1, text.size(), pipe_) == text.size() &&
                             std::fflush(pipe_) == 0;
        if (written) return;
        left_ = true;
        NoteInterrupt();
    }

    const std::string command_;
    std::size_t lines_;  // that still fit
    std::streambuf* const terminal_;
    void (*const pipeSignal_)(int);
    std::FILE* pipe_ = nullptr;
    std::string waiting_;
    bool left_ = false;
};

Pager::Pager() {
    if (std::string command = PagerCommand(); !command.empty()) {
        buffer_ = std::make_unique<Buffer>(std::move(command));
    }
}

Pager::~Pager() = default;

bool Pager::WasLeft() const { return buffer_ != nullptr && buffer_->WasLeft(); }

}  // namespace host
