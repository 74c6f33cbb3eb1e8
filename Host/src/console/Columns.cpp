// Rows of fields as lines.

#include "console/Columns.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>

#include "console/Console.h"
#include "console/Printable.h"

namespace host {

namespace {

constexpr std::size_t kWaiting = 1'000;
constexpr std::size_t kWidest = 60;  // a wider field shifts the rest of its line
constexpr const char* kGap = "  ";

void WriteLine(const std::vector<std::string>& fields, char separator,
               std::string (*shown)(std::string_view)) {
    std::string line;
    for (const std::string& field : fields) {
        if (&field != fields.data()) line += separator;
        line += shown(field);
    }
    std::cout << line << '\n';
}

}  // namespace

std::string CsvField(std::string_view text) {
    // Asked once: rows are many.
    static const bool kToTerminal = isatty(STDOUT_FILENO) != 0;
    const std::string printable = kToTerminal ? Printable(text) : "";
    if (kToTerminal) text = printable;
    const bool plain = text.find_first_of(",\"\r\n") == std::string_view::npos &&
                       !text.starts_with(' ') && !text.ends_with(' ');
    if (plain) return std::string(text);
    std::string field = "\"";
    for (const char c : text) field.append(c == '"' ? 2 : 1, c);
    return field + '"';
}

Columns::~Columns() {
    try {
        Release();
        // A box whose rows did not all come stays open.
        const bool isWhole = std::uncaught_exceptions() == 0;
        if (form_ == Form::Box && !widths_.empty() && isWhole) WriteRule("└", "┴", "┘");
    } catch (...) {
        // Rows are missing; this is reported when the output is flushed.
        std::cout.setstate(std::ios::badbit);
    }
}

void Columns::Begin() {
    if (form_ != Form::Csv || begun_) return;
    WriteLine(headers_, ',', CsvField);
    begun_ = true;
}

void Columns::Add(std::vector<std::string> fields) {
    switch (form_) {
        case Form::Csv:
            Begin();
            WriteLine(fields, ',', CsvField);
            break;
        case Form::Aligned:
        case Form::Box:
            if (!widths_.empty()) return WriteFitted(fields, false);
            waiting_.push_back(std::move(fields));
            if (waiting_.size() == kWaiting) Release();
            break;
        default: WriteLine(fields, '\t', [](std::string_view field) { return std::string(field); });
    }
}

void Columns::Release() {
    if (waiting_.empty()) return;
    widths_.assign(headers_.size(), 0);
    const std::size_t widest = form_ == Form::Box ? std::string::npos : kWidest;
    const auto widen = [this, widest](const std::vector<std::string>& fields) {
        for (std::size_t i = 0; i < std::min(fields.size(), widths_.size()); ++i) {
            widths_[i] = std::max(widths_[i], std::min(DisplayWidth(fields[i]), widest));
        }
    };
    widen(headers_);
    for (const auto& fields : waiting_) widen(fields);
    if (form_ == Form::Box) WriteRule("┌", "┬", "┐");
    WriteFitted(headers_, true);
    if (form_ == Form::Box) WriteRule("├", "┼", "┤");
    for (const auto& fields : waiting_) WriteFitted(fields, false);
    waiting_.clear();
}

void Columns::WriteFitted(const std::vector<std::string>& fields, bool isHeader) const {
    form_ == Form::Box ? WriteBoxed(fields) : WriteAligned(fields, isHeader);
}

void Columns::WriteBoxed(const std::vector<std::string>& fields) const {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t width = DisplayWidth(fields[i]);
        line += i == 0 ? "│ " : " │ ";
        line += fields[i];
        if (width < widths_[i]) line.append(widths_[i] - width, ' ');
    }
    std::cout << line << " │\n";
}

void Columns::WriteRule(const char* left, const char* middle, const char* right) const {
    std::string line;
    for (std::size_t i = 0; i < widths_.size(); ++i) {
        line += i == 0 ? left : middle;
        for (std::size_t column = 0; column < widths_[i] + 2; ++column) line += "─";
    }
    std::cout << line << right << '\n';
}

void Columns::WriteAligned(const std::vector<std::string>& fields, bool isHeader) const {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        line += fields[i];
        if (i + 1 == fields.size()) break;
        const std::size_t width = DisplayWidth(fields[i]);
        if (i < widths_.size() && width < widths_[i]) line.append(widths_[i] - width, ' ');
        line += kGap;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::cout << (isHeader ? Coloured(line, Colour::Faint, HasColours(STDOUT_FILENO)) : line)
              << '\n';
}

}  // namespace host
