// Completion of a statement while it is typed.

#ifndef HOST_COMPLETION_H
#define HOST_COMPLETION_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "script/Evaluator.h"
#include "script/Session.h"

namespace host {

struct Completion {
    std::size_t start;                    // the start of the word being typed
    std::vector<std::string> candidates;  // in alphabetical order; each begins with the word
};

// Completes a statement typed so far, possibly in several lines. Names are case-insensitive.
// Attributes are those of the instance before the point or, if there is none, of all entity types.
Completion Complete(std::string_view statement, const Session& session, const Evaluator& evaluator);

}  // namespace host

#endif
