// Rows of fields as lines.

#include "Columns.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "Console.h"
#include "Html.h"

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
    } catch (...) {
        // Rows are missing; this is reported when the output is flushed.
        std::cout.setstate(std::ios::badbit);
    }
}

void Columns::Add(std::vector<std::string> fields) {
    switch (form_) {
        case Form::Csv:
            if (!begun_) WriteLine(headers_, ',', CsvField);
            begun_ = true;
            WriteLine(fields, ',', CsvField);
            break;
        case Form::Aligned:
            if (!widths_.empty()) return WriteAligned(fields, false);
            waiting_.push_back(std::move(fields));
            if (waiting_.size() == kWaiting) Release();
            break;
        default: WriteLine(fields, '\t', [](std::string_view field) { return std::string(field); });
    }
}

void Columns::Release() {
    if (waiting_.empty()) return;
    widths_.assign(headers_.size(), 0);
    const auto widen = [this](const std::vector<std::string>& fields) {
        for (std::size_t i = 0; i < std::min(fields.size(), widths_.size()); ++i) {
            widths_[i] = std::max(widths_[i], std::min(Characters(fields[i]), kWidest));
        }
    };
    widen(headers_);
    for (const auto& fields : waiting_) widen(fields);
    WriteAligned(headers_, true);
    for (const auto& fields : waiting_) WriteAligned(fields, false);
    waiting_.clear();
}

void Columns::WriteAligned(const std::vector<std::string>& fields, bool isHeader) const {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        line += fields[i];
        if (i + 1 == fields.size()) break;
        const std::size_t width = Characters(fields[i]);
        if (i < widths_.size() && width < widths_[i]) line.append(widths_[i] - width, ' ');
        line += kGap;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::cout << (isHeader ? Coloured(line, Colour::Faint, HasColours(STDOUT_FILENO)) : line)
              << '\n';
}

}  // namespace host
