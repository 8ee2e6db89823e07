// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SERVICE_NAMES_H
#define VORN_CLI_QUESTION_SERVICE_NAMES_H

#include "cli/question/record.h"

namespace cli {

/**
 * Sets the service of records that have a pid, by the library's step. On a host with control groups
 * v2 alone services have their names nevertheless (see groups::ServiceUnits).
 *
 * @return negative, with the platform's error code set, on failure
 */
int NameServices(LibraryFiles& processes);

}  // namespace cli

#endif
