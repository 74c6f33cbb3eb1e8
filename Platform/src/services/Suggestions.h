// Suggestions for unknown names.

#ifndef KOR_SUGGESTIONS_H
#define KOR_SUGGESTIONS_H

#include <string>
#include <string_view>
#include <vector>

#include "KORExport.h"

namespace kor {

// The ending of a message about an unknown name: "; did you mean 'NAME'?" with the candidate that
// is the fewest edits away, ignoring case; empty if none is close enough for a typing error.
KOR_API std::string DidYouMean(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace kor

#endif
