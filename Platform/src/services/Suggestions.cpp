// Suggestions for unknown names.

#include "services/Suggestions.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "SdaiName.h"

namespace kor {

namespace {

constexpr std::size_t kLongestName = 200;

// The Levenshtein distance of two names, ignoring case; `most` if it is not less than that.
std::size_t Distance(std::string_view a, std::string_view b, std::size_t most) {
    if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) >= most) return most;
    std::array<std::size_t, kLongestName + 1> row;
    std::iota(row.begin(), row.begin() + static_cast<long>(b.size()) + 1, std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        std::size_t least = row[0];
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t substitution =
                diagonal + (SdaiFoldCase(a[i]) == SdaiFoldCase(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({substitution, row[j] + 1, row[j + 1] + 1});
            least = std::min(least, row[j + 1]);
        }
        if (least >= most) return most;
    }
    return std::min(row[b.size()], most);
}

}  // namespace

std::string DidYouMean(std::string_view name, const std::vector<std::string>& candidates) {
    if (name.size() > kLongestName) return {};
    std::string_view nearest;
    // At most one error for every three letters.
    std::size_t least = name.size() / 3 + 2;
    for (const std::string& candidate : candidates) {
        if (candidate.size() > kLongestName) continue;
        const std::size_t distance = Distance(name, candidate, least);
        if (distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    std::string addition;
    if (!nearest.empty()) addition.append("; did you mean '").append(nearest).append("'?");
    return addition;
}

}  // namespace kor
