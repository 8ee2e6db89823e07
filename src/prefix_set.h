// SPDX-License-Identifier: MIT
#ifndef VORN_SRC_PREFIX_SET_H
#define VORN_SRC_PREFIX_SET_H

#include <bitset>
#include <string_view>
#include <vector>

namespace VORN {
namespace FileHandle {

/**
 * A set of prefixes that answers whether any of them begins a text, in a few comparisons however
 * many there are.
 *
 * Kept sorted and without those that a shorter one covers. Of such a set only the greatest prefix
 * that is not greater than the text can begin it.
 */
class PrefixSet {
public:
    /** The bytes behind the views stay the caller's and must outlive the set. */
    explicit PrefixSet(std::vector<std::string_view> prefixes);

    bool MatchesBeginOf(std::string_view text) const;
    /** Whether any of them occurs anywhere in the text. */
    bool MatchesInside(std::string_view text) const;

private:
    bool MayBeginAt(std::string_view text, size_t at) const;

    std::vector<std::string_view> prefixes_;
    /** Where no prefix begins with a byte, no search is needed; nor where none goes on so. */
    std::bitset<256> firstBytes_;
    std::bitset<256> secondBytes_;
};

}  // namespace FileHandle
}  // namespace VORN

#endif
