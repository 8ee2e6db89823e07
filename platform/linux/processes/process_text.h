// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_PROCESSES_PROCESS_TEXT_H
#define VORN_PLATFORM_LINUX_PROCESSES_PROCESS_TEXT_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "support/process_text.h"

namespace vornplatform {

using support::ParseAuditId;
using support::ParseProcessStat;
using support::ParseProcessUsers;
using support::ProcessStat;
using support::ProcessUsers;

/**
 * Reads the text of /proc/<pid>/task/<tid>/children, each pid with a blank behind it; one that the
 * end of the text cuts off is left out.
 */
std::vector<pid_t> ParseChildren(std::string_view text);

/** Reads the inode number from a descriptor's link, such as "socket:[29024]". */
std::optional<std::uint64_t> ParseSocketLink(std::string_view link);

/**
 * The file name of an executable from its link, such as "sshd" from "/usr/sbin/sshd". A program
 * that was replaced while it runs keeps its name: " (deleted)" at the end is dropped.
 */
std::string_view ExecutableName(std::string_view link);

}  // namespace vornplatform

#endif
