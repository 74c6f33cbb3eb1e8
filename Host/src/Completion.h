// What a statement that is being typed may go on with.

#ifndef HOST_COMPLETION_H
#define HOST_COMPLETION_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Evaluator.h"
#include "Session.h"

namespace host {

struct Completion {
    std::size_t start;                    // where the word that is being typed begins
    std::vector<std::string> candidates;  // in alphabetical order, the word is the start of each
};

// For a statement as far as it is typed, which may be of several lines. Names match without regard
// to case. Attributes are those of the instance that stands before the point; where there is none,
// those of all entity types.
Completion Complete(std::string_view statement, const Session& session, const Evaluator& evaluator);

}  // namespace host

#endif
