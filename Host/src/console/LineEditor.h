// Lines that a user types: edited on a terminal, with history and completion; plain otherwise.

#ifndef HOST_LINEEDITOR_H
#define HOST_LINEEDITOR_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "script/Completion.h"

namespace host {

class LineEditor {
  public:
    // Completes the line up to the cursor.
    using Complete = std::function<Completion(std::string_view line)>;

    // Edits lines if standard input and output are a terminal.
    explicit LineEditor(Complete complete);
    ~LineEditor();

    bool IsInteractive() const { return terminal_ != nullptr; }

    // The outcome of reading a line. On a terminal, Ctrl-C cancels the line, and Ctrl-D on an empty
    // line ends the input. Reports an input that cannot be read and throws Unusable.
    enum class Result { Line, Cancelled, End };
    Result Read(const std::string& prompt, std::string& line);

    // Asks a question, on a terminal only; returns whether the answer is yes, which it is also at
    // the end of the input.
    bool Ask(const std::string& question);

  private:
    class Terminal;
    std::unique_ptr<Terminal> terminal_;
};

// The file with the user's history: orx/history in $XDG_STATE_HOME or ~/.local/state. Empty if
// there is no home directory, or if it belongs to another user (as under sudo).
std::string HistoryFile();

}  // namespace host

#endif
