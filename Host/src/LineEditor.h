// Lines that a user types: edited on a terminal, with history and completion; plain otherwise.

#ifndef HOST_LINEEDITOR_H
#define HOST_LINEEDITOR_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Completion.h"

namespace host {

class LineEditor {
  public:
    // What the line up to the cursor may go on with.
    using Complete = std::function<Completion(std::string_view line)>;

    // Edits lines when the standard input and output are a terminal.
    explicit LineEditor(Complete complete);
    ~LineEditor();

    bool IsInteractive() const { return terminal_ != nullptr; }

    // What came of a line. On a terminal, Ctrl-C cancels the line and Ctrl-D on an empty one ends
    // the input.
    // An input that cannot be read is told, and Unusable thrown.
    enum class Result { Line, Cancelled, End };
    Result Read(const std::string& prompt, std::string& line);

    // Whether a question is answered with yes; so it is where the input ends. On a terminal only.
    bool Ask(const std::string& question);

  private:
    class Terminal;
    std::unique_ptr<Terminal> terminal_;
};

// The file that keeps the history of the user: orx/history in $XDG_STATE_HOME, or in
// ~/.local/state. Empty where there is no home, or where it is another user's (as under sudo).
std::string HistoryFile();

}  // namespace host

#endif
