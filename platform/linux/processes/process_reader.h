// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_PROCESSES_PROCESS_READER_H
#define VORN_PLATFORM_LINUX_PROCESSES_PROCESS_READER_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/processes/process_text.h"

/**
 * @file
 * Facts of a process from /proc/<pid>/. A process that has gone meanwhile or is kept from this
 * caller yields nothing, like a file that this kernel does not offer.
 */

namespace vornplatform {

/** The ids of all processes, ascending; none without /proc. HostError when they can't be listed. */
std::vector<pid_t> ListProcesses();

/** /proc/<pid>/stat; HostError EPROTO where it has another form. */
std::optional<ProcessStat> ReadProcessStat(pid_t pid);

/** /proc/<pid>/status */
std::optional<ProcessUsers> ReadProcessUsers(pid_t pid);

/** /proc/<pid>/loginuid: who logged in, whatever the process has become since. */
std::optional<std::uint32_t> ReadLoginUid(pid_t pid);

/** /proc/<pid>/sessionid: a number of its own for each login. */
std::optional<std::uint32_t> ReadSessionId(pid_t pid);

/** /proc/<pid>/task/<pid>/children: of its first thread, some 500 of them at most. */
std::vector<pid_t> ReadChildren(pid_t pid);

/** The file name of its program (/proc/<pid>/exe); threads of the kernel have none. */
std::optional<std::string> ReadProgram(pid_t pid);

/** Whether the file of its program lends its owner's rights to whoever runs it. */
std::optional<bool> RunsSetUserId(pid_t pid);

}  // namespace vornplatform

#endif
