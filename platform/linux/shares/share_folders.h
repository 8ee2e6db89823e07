// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_SHARE_FOLDERS_H
#define VORN_PLATFORM_LINUX_SHARES_SHARE_FOLDERS_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/shares/share_table.h"

namespace vornplatform {

/**
 * Whether a top-level folder of a volume is kept from users: its name begins with "." or "@", or
 * its path contains one of the hidden texts.
 */
bool IsHiddenFolder(std::string_view name, const std::vector<std::string>& hidden);

/**
 * What a host that exports nothing shares: each top-level folder of each mounted volume that is
 * not hidden. A volume that can't be listed is left out, with a log line.
 *
 * @throw HostError  when the volumes or the hidden directories can't be read
 */
std::vector<Share> FolderShares();

}  // namespace vornplatform

#endif
