// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_ASKER_H
#define VORN_CLI_HOST_ASKER_H

#include <string>

namespace cli {

/** Who has started this program, for the system log: "uid 0, login uid 1000, sudo user alice". */
std::string Asker();

}  // namespace cli

#endif
