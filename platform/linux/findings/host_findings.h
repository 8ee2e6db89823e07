// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_HOST_FINDINGS_H
#define VORN_PLATFORM_LINUX_FINDINGS_HOST_FINDINGS_H

#include <string>
#include <vector>

#include "platform/linux/findings/finding.h"
#include "platform/linux/shares/share_table.h"

namespace vornplatform {

/** What the whole host has and lacks, a line or more a subject. Throws HostError. */
Findings FindingsOfHost();

/**
 * Folders that are shared, each once with the servers that export it: "photo (NFS, Samba)". The
 * name is that of the first.
 */
std::vector<std::string> DescribeShares(const std::vector<Share>& shares);

/** Volumes in the order that people count in: /volume2 before /volume10. */
void OrderVolumes(std::vector<std::string>& volumes);

}  // namespace vornplatform

#endif
