// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_KERNEL_SOURCE_FINDING_H
#define VORN_CLI_HOST_KERNEL_SOURCE_FINDING_H

#include "cli/host/host_check.h"

namespace cli {

/** Where records come from on this host, and why not from the quicker source; never a fault. */
Finding ExamineSource();

}  // namespace cli

#endif
