// The trace as a user asks for it: with a line before each call that says what is called, of some
// functions alone, to some depth.

#ifndef HOST_TRACEVIEW_H
#define HOST_TRACEVIEW_H

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "KORPSNTrace.h"

namespace host {

class TraceView {
  public:
    // Lines go to the file, which is emptied, or to the standard error stream ("-"). False, and the
    // trace is off, when the file cannot be opened.
    bool Start(const std::string& file);
    // Ends the trace; goes on, in the file as far as it is, or on the standard error stream.
    void Stop();
    void GoOn();
    bool IsOn() const { return capture_.has_value(); }

    // Shows what these functions, which must be in the export table, and those that they call say;
    // all functions when there are none.
    void ShowOnly(const std::vector<std::string>& functions);
    // Shows scopes up to that depth, those of ShowOnly and all others that a call opens are the
    // first; 0 for all.
    void ShowDepth(int depth) { depth_ = depth; }

    // A call comes: its first line that is shown stands under "== LINE:COLUMN FUNCTION(ARGUMENTS)".
    void Announce(std::string header) { header_ = std::move(header); }

  private:
    void Take(std::string_view line);
    bool IsShown(std::string_view line);

    std::set<std::string, std::less<>> labels_;  // of the functions that are shown alone
    int depth_ = 0;
    std::optional<int> base_;  // the depth of the open scope that is shown alone
    std::string header_;
    std::optional<KORPSNCapture> capture_;
};

}  // namespace host

#endif
