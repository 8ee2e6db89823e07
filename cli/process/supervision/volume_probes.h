// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_VOLUME_PROBES_H
#define VORN_CLI_PROCESS_SUPERVISION_VOLUME_PROBES_H

#include <chrono>
#include <string>
#include <vector>

namespace cli {

/**
 * The volumes that give no sign of life (`statfs`, `stat`) within a time. Each is asked by a
 * process of its own, as the question may never return; all that can be ended has ended afterwards.
 */
std::vector<std::string> SilentVolumes(std::chrono::milliseconds patience);

}  // namespace cli

#endif
