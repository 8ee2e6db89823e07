// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_HOST_CHECK_H
#define VORN_CLI_HOST_HOST_CHECK_H

/**
 * @file
 * Whether this host can answer in full.
 */

#include <string_view>
#include <vector>

#include "cli/host/platform_findings.h"

namespace cli {

/** "ok", "warning" or "missing". */
std::string_view StateName(State state);

/** What the platform finds, and what the library takes from units and texts. Throws Failure. */
std::vector<Finding> ExamineHost();

}  // namespace cli

#endif
