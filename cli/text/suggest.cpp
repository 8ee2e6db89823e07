// SPDX-License-Identifier: MIT
#include "cli/text/suggest.h"

#include <algorithm>

namespace cli {
namespace {

/** Insertions, deletions, replacements and swaps of neighbours that turn one word into another. */
size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::vector<size_t>> cost(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const size_t replaced = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
            }
        }
    }
    return cost[a.size()][b.size()];
}

}  // namespace

std::string NearWord(std::string_view word, const std::vector<std::string>& candidates) {
    constexpr size_t kLongestWord = 64;
    std::string nearest;
    if (word.size() > kLongestWord) {
        return nearest;
    }
    size_t least = word.size() / 3 + 2;
    for (const std::string& candidate : candidates) {
        const size_t distance = EditDistance(word, candidate);
        // A word that shares nothing with the candidate is no misspelling of it.
        if (distance < least && distance < std::max(word.size(), candidate.size())) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    const std::string nearest = NearWord(word, candidates);
    return nearest.empty() ? nearest : " (did you mean '" + nearest + "'?)";
}

}  // namespace cli
