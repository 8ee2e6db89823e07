// SPDX-License-Identifier: MIT
#ifndef VORN_FUZZ_SHARE_CHECKS_H
#define VORN_FUZZ_SHARE_CHECKS_H

#include <string>
#include <utility>
#include <vector>

#include "fuzz/text_input.h"
#include "platform/linux/shares/share_paths.h"
#include "platform/linux/shares/share_table.h"
#include "platform/linux/volumes/volume_table.h"

/** Whatever the source: each share that is kept lies on a volume and is found by its name. */
inline void CheckShares(const std::vector<vornplatform::Share>& written) {
    std::vector<vornplatform::Share> shares = vornplatform::SharesOnVolumes(written);
    for (const vornplatform::Share& share : shares) {
        Must(vornplatform::IsOnVolume(share.path));
        Must(share.path.back() != '/' && share.path.find("//") == std::string::npos);
        Must((share.path + "/").find("/../") == std::string::npos);
    }
    const vornplatform::ShareTable table(std::move(shares));
    for (const vornplatform::Share& share : table.Shares()) {
        // Names and paths pass through C strings.
        Must(share.path.find('\0') == std::string::npos);
        Must(!share.name.empty() && share.name.find('\0') == std::string::npos);
        Must(table.Find(share.name) == &share);
    }
}

#endif
