// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_NFS_EXPORTS_H
#define VORN_PLATFORM_LINUX_SHARES_NFS_EXPORTS_H

#include <string_view>
#include <vector>

#include "platform/linux/shares/share_table.h"

namespace vornplatform {

/**
 * The folders that a text in the form of exports(5) exports, named by the last element of their
 * path as it is written. Understands comments, continued lines, quotes and octal escapes.
 */
std::vector<Share> ParseExports(std::string_view text);

}  // namespace vornplatform

#endif
