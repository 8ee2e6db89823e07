// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_SAMBA_DUMP_H
#define VORN_PLATFORM_LINUX_SHARES_SAMBA_DUMP_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/shares/share_table.h"

namespace vornplatform {

/** What Samba says of its configuration. */
struct SambaDump {
    std::vector<Share> shares;   /**< with their paths as they are written */
    std::string usershareFolder; /**< empty where users may not add shares */
};

/**
 * Reads what `testparm -s` prints: includes resolved, values that differ from the defaults alone.
 *
 * Left out: [homes], [printers], [print$] and other printers, shares that are not available, and
 * paths that depend on the client. Nothing at all for a text without [global],
 * which testparm always prints, or with a zero byte, which it never does.
 */
std::optional<SambaDump> ParseSambaDump(std::string_view text);

/**
 * Files that a configuration names by "include" or "config file", so that they can be watched.
 * Without those that depend on the client ("%") or are no absolute path.
 */
std::vector<std::string> IncludedFiles(std::string_view config);

/**
 * Reads a file that `net usershare` wrote.
 *
 * @param fileName  the share's name where the file doesn't say it itself
 * @return nothing for a text in another form and without a path
 */
std::optional<Share> ParseUsershare(std::string_view fileName, std::string_view text);

}  // namespace vornplatform

#endif
