// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SMB_STATUS_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SMB_STATUS_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vornplatform {

/** Names of the users whose files an smbd may have open, by its pid; each once, sorted. */
using SmbUsers = std::unordered_map<pid_t, std::vector<std::string>>;

/**
 * Reads what "smbstatus --json" prints. Sessions that are not yet authenticated are left out, like
 * those whose entry has another form.
 *
 * With "--processes" it tells of no open files: the users of a server are all that have a session.
 * Without, they are those as whom it has opened all its files, where that is one of several.
 *
 * @return nothing when the text as a whole has another form
 */
std::optional<SmbUsers> ParseSmbStatus(std::string_view text);

}  // namespace vornplatform

#endif
