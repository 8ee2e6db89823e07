#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SMB_STATUS_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SMB_STATUS_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vornplatform {

/** Names of the users with a session, by the smbd that serves it; each once, sorted. */
using SmbUsers = std::unordered_map<pid_t, std::vector<std::string>>;

/**
 * Reads what "smbstatus --json --processes" prints. Sessions that are not yet authenticated are
 * left out, like those whose entry has another form.
 *
 * @return nothing when the text as a whole has another form
 */
std::optional<SmbUsers> ParseSmbStatus(std::string_view text);

}  // namespace vornplatform

#endif
