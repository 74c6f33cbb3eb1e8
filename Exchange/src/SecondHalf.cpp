// Reads the second half of an exchange file on a thread of its own.

#include "SecondHalf.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace exchange {

SecondHalf::SecondHalf(std::unique_ptr<Source> source, const std::string& file,
                       const ReadOptions& options, const InstanceReader& first)
    : source_(std::move(source)),
      problems_(file, options.lenient, messages_),
      lexer_(*source_, problems_, options.longestText),
      instances_(lexer_, problems_) {
    problems_.EnterData();
    lexer_.ReadPart();
    lexer_.TellProgress([this](std::uint64_t read) {
        progress_.store(read - std::min(read, start_), std::memory_order_relaxed);
    });
    instances_.AddExternals(first);
}

std::unique_ptr<SecondHalf> SecondHalf::Begin(const Source& source, std::uint64_t from,
                                              const std::string& file, const ReadOptions& options,
                                              SchemaPtr schema, const InstanceReader& first) {
    std::unique_ptr<Source> again = source.Again();
    if (again == nullptr) return nullptr;
    std::unique_ptr<SecondHalf> half(new SecondHalf(std::move(again), file, options, first));
    if (!half->FindStart(from)) return nullptr;
    half->model_ = std::make_unique<kor::Model>(std::move(schema));
    half->instances_.Into(*half->model_);
    try {
        half->thread_ = std::thread(&SecondHalf::Read, half.get());
    } catch (const std::system_error&) {
        return nullptr;
    }
    return half;
}

SecondHalf::~SecondHalf() {
    stopped_.store(true, std::memory_order_relaxed);
    if (thread_.joinable()) thread_.join();
}

// Only what is near is looked at.
bool SecondHalf::FindStart(std::uint64_t from) {
    lexer_.GoTo({from, 1, from});
    const std::string_view near = lexer_.Window();
    for (std::size_t end = near.find(';'); end != std::string_view::npos;
         end = near.find(';', end + 1)) {
        const std::size_t next = near.find_first_not_of(" \t\r\n", end + 1);
        if (next == std::string_view::npos) return false;
        if (near[next] != '#') continue;
        start_ = from + next;
        lexer_.GoTo({start_, 1, start_});
        return true;
    }
    return false;
}

void SecondHalf::Read() noexcept {
    try {
        while (!stopped_.load(std::memory_order_relaxed)) {
            end_ = lexer_.Now();
            warningCount_ = messages_.WarningCount();
            if (!lexer_.TakeIf('#')) break;
            instances_.Instance();
        }
    } catch (const SyntaxError&) {
        instances_.ReleaseValues();
    } catch (const std::bad_alloc&) {
        instances_.ReleaseValues();
        model_.reset();
    }
}

kor::Model* SecondHalf::Wait() {
    thread_.join();
    return model_.get();
}

Input::Position SecondHalf::End(const Input::Position& start) const {
    return {end_.offset, start.line + end_.line - 1,
            end_.line == 1 ? start.lineStart : end_.lineStart};
}

void SecondHalf::TellWarnings(const Input::Position& start, Messages& messages) const {
    const std::vector<Message>& kept = messages_.Warnings();
    for (std::uint64_t i = 0; i < warningCount_; ++i) {
        // No more are kept than these.
        if (i >= kept.size()) {
            messages.AddWarning({});
            continue;
        }
        Message warning = kept[i];
        if (warning.line == 1) warning.column += start.offset - start.lineStart;
        warning.line += start.line - 1;
        messages.AddWarning(std::move(warning));
    }
}

}  // namespace exchange
