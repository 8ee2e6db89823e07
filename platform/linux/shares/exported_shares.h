// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_EXPORTED_SHARES_H
#define VORN_PLATFORM_LINUX_SHARES_EXPORTED_SHARES_H

#include <vector>

#include "platform/linux/files/file_watch.h"
#include "platform/linux/shares/share_table.h"

namespace vornplatform {

struct ExportedShares {
    std::vector<Share> shares; /**< Samba's, its users', then NFS's; paths as they are written */
    FileWatch watch;           /**< the files that this came from */
    /** Why sources failed, a sentence each; they have been logged. */
    std::vector<std::string> losses;
};

/** Reads what this host's file servers export. May run testparm for up to 2 s. */
ExportedShares ReadExportedShares();

}  // namespace vornplatform

#endif
