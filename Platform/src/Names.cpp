// Dictionary names: lookup tables, and suggestions for unknown names.

#include "Names.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace kor {

std::string Folded(std::string_view name) {
    std::string folded(name);
    for (char& c : folded) c = SdaiFoldCase(c);
    return folded;
}

bool IsWord(std::string_view text) {
    const auto belongs = [](char c) {
        const char folded = SdaiFoldCase(c);
        return (folded >= 'A' && folded <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), belongs);
}

bool NameTable::Add(std::string_view folded, int value) {
    if (Find(folded) != kAbsent) return false;
    if (2 * (size_ + 1) > entries_.size()) {
        std::vector<Entry> old(2 * entries_.size());
        old.swap(entries_);
        mask_ = entries_.size() - 1;
        for (const Entry& entry : old) {
            if (entry.value == kAbsent) continue;
            std::size_t i = entry.hash & mask_;
            while (entries_[i].value != kAbsent) i = (i + 1) & mask_;
            entries_[i] = entry;
        }
    }
    const std::uint32_t hash = SdaiNameHash(folded);
    std::size_t i = hash & mask_;
    while (entries_[i].value != kAbsent) i = (i + 1) & mask_;
    entries_[i] = {folded, hash, value};
    ++size_;
    return true;
}

int NameTable::Find(std::string_view name) const {
    const std::uint32_t hash = SdaiNameHash(name);
    for (std::size_t i = hash & mask_;; i = (i + 1) & mask_) {
        const Entry& entry = entries_[i];
        if (entry.value == kAbsent) return kAbsent;
        if (entry.hash == hash && MatchesFolded(name, entry.name)) return entry.value;
    }
}

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
