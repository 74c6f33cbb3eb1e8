// The trace for a user: with a line before each call that shows the call, optionally limited to
// some functions or to a depth.

#ifndef HOST_TRACEVIEW_H
#define HOST_TRACEVIEW_H

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "KORPSNTrace.h"

namespace host {

class TraceView {
  public:
    // Sends lines to the file, which is truncated, or to the standard error stream ("-"). Returns
    // false, with the trace off, if the file cannot be opened.
    bool Start(const std::string& file);
    // Stops the trace; resumes it, appending to the file, or on the standard error stream.
    void Stop();
    void GoOn();
    bool IsOn() const { return capture_.has_value(); }

    // Shows only the lines of these functions, which must be in the export table, and of the
    // functions that they call; all functions if the list is empty.
    void ShowOnly(const std::vector<std::string>& functions);
    // Shows scopes up to that depth, where the functions of ShowOnly, or those called directly,
    // have depth 1; 0 for all.
    void ShowDepth(int depth) { depth_ = depth; }

    // Announces a call: its first visible line is preceded by "== LINE:COLUMN FUNCTION(ARGUMENTS)".
    void Announce(std::string header) { header_ = std::move(header); }

  private:
    void Take(std::string_view line);
    bool IsShown(std::string_view line);

    std::set<std::string, std::less<>> labels_;  // of the only functions shown
    int depth_ = 0;
    std::optional<int> base_;  // the depth of the open scope of such a function
    std::string header_;
    std::optional<KORPSNCapture> capture_;
};

}  // namespace host

#endif
