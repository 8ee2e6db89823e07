// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SMB_QUERY_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SMB_QUERY_H

#include <optional>
#include <string>

#include "platform/linux/connections/smb_status.h"

namespace vornplatform {

constexpr char kSmbStatusPath[] = "/usr/bin/smbstatus";

enum class SmbQuestion { kSessions, kOpenFiles };

/**
 * Runs smbstatus, for 2 s at most, and reads up to 8 MiB of what it prints: some 15,000 sessions,
 * or open files.
 *
 * @param question  whether its users are those with sessions or, where several share a server,
 *                  those who have files open
 * @param program  absolute path
 * @return nothing, after one line in the system log, when it is missing, fails, hangs, or prints
 *         too much or nonsense
 */
std::optional<SmbUsers> AskSmbStatus(SmbQuestion question,
                                     const std::string& program = kSmbStatusPath);

}  // namespace vornplatform

#endif
