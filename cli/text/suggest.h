// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_TEXT_SUGGEST_H
#define VORN_CLI_TEXT_SUGGEST_H

#include <string>
#include <string_view>
#include <vector>

namespace cli {

/** The candidate that a word was probably meant to be; empty when none is near. */
std::string NearWord(std::string_view word, const std::vector<std::string>& candidates);

/** " (did you mean 'sort'?)" or nothing. */
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace cli

#endif
