// The trace service, which uses the contract's header as it is.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>

#include "KORPSNTrace.h"

namespace {

// The destination of the lines.
struct Target {
    std::mutex mutex;
    std::string file;      // "": the standard error stream
    std::ofstream stream;  // opened for the first line
    KORPSNSink* sink = nullptr;
};

// Functions may trace until the process ends, so it is never destroyed.
Target& TheTarget() {
    static Target& target = *new Target;
    return target;
}

thread_local int depth = 0;

// Line breaks in the data must not look like lines of their own.
std::string OneLine(std::string text) {
    if (text.ends_with('\n')) text.pop_back();
    std::string line;
    for (const char c : text) line += c == '\n' ? "\\n" : c == '\r' ? "\\r" : std::string(1, c);
    return line + '\n';
}

void WriteToFile(const std::string& line) {
    Target& target = TheTarget();
    const std::lock_guard lock(target.mutex);
    if (target.file.empty()) {
        std::cerr << line;
        return;
    }
    if (!target.stream.is_open()) target.stream.open(target.file, std::ios::binary | std::ios::app);
    target.stream << line << std::flush;
}

}  // namespace

struct KORPSNTrace::Line {
    std::ostringstream stream;
};

struct KORPSNTrace::Service {
    Service() {
        if (const char* file = std::getenv("KOR_TRACE_FILE")) TheTarget().file = file;
        if (const char* level = std::getenv("KOR_TRACE")) activeLevel_ = std::atoi(level);
    }
    static const Service service;
};

constinit std::atomic<int> KORPSNTrace::activeLevel_{0};
const KORPSNTrace::Service KORPSNTrace::Service::service;

int KORPSNTrace::GetIndent() { return 3 * std::max(depth - 1, 0); }

KORString KORPSNTrace::Indent(int count) {
    static const std::string& blanks = *new std::string(1000, ' ');
    const auto width = static_cast<std::size_t>(std::clamp(count, 0, 1000));
    return KORString(blanks.c_str() + blanks.size() - width);
}

KORPSNTrace::Target KORPSNTrace::Redirect(Target target) {
    KORPSNSink* before = TheTarget().sink;
    TheTarget().sink = target.sink;
    return {activeLevel_.exchange(target.level), before};
}

void KORPSNTrace::Open() noexcept {
    state_ = State::Open;
    ++depth;
    WriteMark(" {");
}

void KORPSNTrace::Close() noexcept {
    if (state_ == State::Open) {
        if (LevelIsActive(level_) != 0) WriteMark(" }");
        --depth;
    }
    delete line_;
}

void KORPSNTrace::WriteMark(const char* mark) noexcept {
    GetLigne().GetStream() << Indent(GetIndent()) << label_ << mark;
    Out();
}

KORPSNLigne KORPSNTrace::GetLigne() {
    delete line_;
    line_ = new Line;
    line_->stream.imbue(std::locale::classic());
    if (state_ == State::Closed) state_ = State::Lent;
    return KORPSNLigne(line_->stream);
}

void KORPSNTrace::Out() {
    if (line_ == nullptr || line_->stream.str().empty()) return;
    const std::string line = OneLine(line_->stream.str());
    line_->stream.str("");
    KORPSNSink* sink = TheTarget().sink;
    if (sink != nullptr) {
        sink->Write(line);
    } else {
        WriteToFile(line);
    }
}

void KORPSNTrace::Pass(std::string_view line) { WriteToFile(OneLine(std::string(line))); }

bool KORPSNTrace::Configure(int level, const char* file) {
    TheTarget().file = file != nullptr ? file : "";
    TheTarget().stream = std::ofstream();
    const bool opened = TheTarget().file.empty() || std::ofstream(TheTarget().file).good();
    if (!opened) TheTarget().file.clear();
    activeLevel_ = opened ? level : 0;
    return opened;
}

KORPSNCapture::KORPSNCapture(Take take, int level)
    : take_(std::move(take)), before_(KORPSNTrace::Redirect({level, this})) {}

KORPSNCapture::~KORPSNCapture() { KORPSNTrace::Redirect(before_); }

void KORPSNCapture::Write(std::string_view line) noexcept {
    try {
        take_(line);
    } catch (...) {
    }
}
