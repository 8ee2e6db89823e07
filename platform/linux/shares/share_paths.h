// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_SHARE_PATHS_H
#define VORN_PLATFORM_LINUX_SHARES_SHARE_PATHS_H

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/shares/share_table.h"

namespace vornplatform {

/**
 * Finds where shares really are: the kernel names files by a path without links, whatever the
 * configuration writes. To be used for one pass over the shares, as links change.
 */
class SharePaths {
public:
    /**
     * @param written  absolute
     * @return the path without links. Where it can't be followed, as far as its text tells
     */
    std::string Resolve(const std::string& written);

private:
    const std::string& ResolveFolder(const std::string& folder);

    /** Most shares lie beside others. Empty for a folder that can't be followed. */
    std::unordered_map<std::string, std::string> folders_;
};

/** The shares whose paths, resolved, lie on a volume. */
std::vector<Share> SharesOnVolumes(const std::vector<Share>& written);

}  // namespace vornplatform

#endif
