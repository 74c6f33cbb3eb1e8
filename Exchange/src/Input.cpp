// Input as a moving window of bytes.

#include "Input.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Files.h"
#include "services/Utf8.h"

namespace exchange {

namespace {

class FileSource final : public Source {
  public:
    explicit FileSource(File file) : file_(std::move(file)) {}

    std::size_t Read(char* to, std::size_t size) override {
        const std::size_t count = file_.ReadAt(at_, to, size);
        at_ += count;
        if (count == 0) error = file_.Reason();
        return count;
    }

    void Seek(std::uint64_t offset) override { at_ = offset; }
    std::uint64_t Size() const override { return file_.Size(); }

    std::unique_ptr<Source> Again() const override {
        File again(file_.Again());
        return again.Error() == 0 ? std::make_unique<FileSource>(std::move(again)) : nullptr;
    }

    bool IsUtf8() override {
        std::vector<char> block(kUtf8Block);
        std::size_t cut = 0;  // the bytes of a character split by the end of the last block
        for (std::uint64_t at = 0;;) {
            const std::size_t count = file_.ReadAt(at, block.data() + cut, block.size() - cut);
            if (count == 0) return file_.Error() != 0 || cut == 0;
            at += count;
            std::string_view text(block.data(), cut + count);
            kor::SkipUtf8(text);
            cut = text.size();
            // The longest character has four bytes.
            if (cut > 3) return false;
            text.copy(block.data(), cut);
        }
    }

  private:
    static constexpr std::size_t kUtf8Block = std::size_t{1} << 16;

    File file_;
    std::uint64_t at_ = 0;  // what is read next
};

class TextSource final : public Source {
  public:
    explicit TextSource(std::string_view text) : text_(text) {}
    explicit TextSource(std::string text) : own_(std::move(text)), text_(own_) {}

    std::size_t Read(char* to, std::size_t size) override {
        const std::size_t count = text_.copy(to, size, read_);
        read_ += count;
        return count;
    }

    void Seek(std::uint64_t offset) override { read_ = static_cast<std::size_t>(offset); }
    std::uint64_t Size() const override { return text_.size(); }
    std::unique_ptr<Source> Again() const override { return Of(text_); }
    bool IsUtf8() override { return kor::IsUtf8(text_); }

  private:
    std::string own_;
    std::string_view text_;
    std::size_t read_ = 0;
};

}  // namespace

std::unique_ptr<Source> Source::Of(std::string_view text) {
    return std::make_unique<TextSource>(text);
}

std::unique_ptr<Source> Source::Open(const std::string& path, std::string& error) {
    File file = File::ToRead(path);
    if (file.Error() == 0 && file.IsRegular()) return std::make_unique<FileSource>(std::move(file));
    std::string text = file.Error() == 0 ? file.ReadAll() : "";
    if (file.Error() == 0) return std::make_unique<TextSource>(std::move(text));
    error = file.Reason();
    return nullptr;
}

Input::Input(Source& source) : source_(source), window_(kBeyond, '\0') {
    at = end = last_ = window_.data();
    Move(at);
}

const char* Input::Move(const char* kept) {
    const std::size_t keptSize = static_cast<std::size_t>(end - kept);
    const std::size_t atOffset = static_cast<std::size_t>(at - kept);
    windowStart_ = Offset(kept);
    if (window_.size() < keptSize + kBlock + kBeyond) {
        std::vector<char> larger(std::max(keptSize + kBlock, 2 * keptSize) + kBeyond);
        std::memcpy(larger.data(), kept, keptSize);
        window_.swap(larger);
    } else if (kept != window_.data()) {
        std::memmove(window_.data(), kept, keptSize);
    }
    std::size_t size = keptSize;
    // A pipe may return less than requested.
    while (size < keptSize + kBlock && !atEnd_) {
        const std::size_t count = source_.Read(window_.data() + size, keptSize + kBlock - size);
        atEnd_ = count == 0;
        size += count;
    }
    window_[size] = '\0';
    at = window_.data() + atOffset;
    end = window_.data() + size;
    last_ = atEnd_ ? end : end - kAhead;
    if (progress) progress(windowStart_ + size);
    return window_.data();
}

void Input::GoTo(const Position& position) {
    source_.Seek(position.offset);
    at = end = window_.data();
    windowStart_ = position.offset;
    lineStart_ = position.lineStart;
    line_ = position.line;
    atEnd_ = false;
    Move(at);
}

void Input::SkipTo(const Position& position) {
    if (position.offset < windowStart_ || position.offset > Offset(end)) return GoTo(position);
    at = window_.data() + (position.offset - windowStart_);
    line_ = position.line;
    lineStart_ = position.lineStart;
    Ahead();
}

void Input::NewLines(const char* from, const char* to) {
    for (; from != to; ++from) {
        if (EndsLine(from)) NewLine(from + 1);
    }
}

}  // namespace exchange
