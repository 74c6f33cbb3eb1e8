// The trace for a user.

#include "script/TraceView.h"

#include <algorithm>

#include "ORXExportTable.h"

namespace host {

namespace {

constexpr int kLevel = 12;
constexpr int kWidestIndent = 1000;  // of the trace service

}  // namespace

bool TraceView::Start(const std::string& file) {
    Stop();
    if (!KORPSNTrace::Configure(0, file == "-" ? nullptr : file.c_str())) return false;
    GoOn();
    return true;
}

void TraceView::GoOn() {
    if (!IsOn()) capture_.emplace([this](std::string_view line) { Take(line); }, kLevel);
}

void TraceView::Stop() {
    capture_.reset();
    base_.reset();
    header_.clear();
}

void TraceView::ShowOnly(const std::vector<std::string>& functions) {
    labels_.clear();
    for (const std::string& function : functions) {
        labels_.emplace(orx::FindExport(function)->label);
    }
}

void TraceView::Take(std::string_view line) {
    if (!IsShown(line)) return;
    if (!header_.empty()) KORPSNTrace::Pass(header_);
    header_.clear();
    KORPSNTrace::Pass(line);
}

// A scope's first and last line have the scope's indentation; the function's lines are indented
// further.
bool TraceView::IsShown(std::string_view line) {
    const int indent = KORPSNTrace::GetIndent();
    const int depth = indent / 3;
    if (labels_.empty()) return depth_ == 0 || depth < depth_;
    const int blanks = std::min(indent, kWidestIndent);
    std::string_view mark = line.substr(std::min(line.size(), static_cast<std::size_t>(blanks)));
    if (mark.ends_with('\n')) mark.remove_suffix(1);
    const auto isMark = [&](std::string_view brace) {
        return mark.ends_with(brace) && labels_.contains(mark.substr(0, mark.size() - 2));
    };
    if (!base_.has_value() && isMark(" {")) base_ = depth;
    const bool shown = base_.has_value() && (depth_ == 0 || depth - *base_ < depth_);
    if (base_ == depth && isMark(" }")) base_.reset();
    return shown;
}

}  // namespace host
