// SPDX-License-Identifier: MIT
#include "src/prefix_set.h"

#include <algorithm>

#include "support/text.h"

namespace VORN {
namespace FileHandle {

PrefixSet::PrefixSet(std::vector<std::string_view> prefixes) : prefixes_(std::move(prefixes)) {
    std::sort(prefixes_.begin(), prefixes_.end());
    // What a prefix covers follows it directly in this order.
    size_t kept = 0;
    for (std::string_view prefix : prefixes_) {
        if (kept == 0 || !support::StartsWith(prefix, prefixes_[kept - 1])) {
            prefixes_[kept++] = prefix;
        }
    }
    prefixes_.resize(kept);
    for (std::string_view prefix : prefixes_) {
        if (!prefix.empty()) {
            firstBytes_.set(static_cast<unsigned char>(prefix.front()));
            if (prefix.size() > 1) {
                secondBytes_.set(static_cast<unsigned char>(prefix[1]));
            } else {
                secondBytes_.set();
            }
        }
    }
}

bool PrefixSet::MatchesBeginOf(std::string_view text) const {
    const auto next = std::upper_bound(prefixes_.begin(), prefixes_.end(), text);
    return next != prefixes_.begin() && support::StartsWith(text, *std::prev(next));
}

bool PrefixSet::MayBeginAt(std::string_view text, size_t at) const {
    return firstBytes_.test(static_cast<unsigned char>(text[at])) &&
           (at + 1 == text.size() || secondBytes_.test(static_cast<unsigned char>(text[at + 1])));
}

bool PrefixSet::MatchesInside(std::string_view text) const {
    if (MatchesBeginOf(text)) {
        return true;
    }
    for (size_t at = 1; at < text.size(); ++at) {
        if (MayBeginAt(text, at) && MatchesBeginOf(text.substr(at))) {
            return true;
        }
    }
    return false;
}

}  // namespace FileHandle
}  // namespace VORN
