// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_SHARES_H
#define VORN_CLI_HOST_SHARES_H

#include <string>
#include <vector>

namespace cli {

/** The first of some paths that is in no share and has none below it; empty when there is none. */
std::string FirstOutsideShares(const std::vector<std::string>& paths);

}  // namespace cli

#endif
