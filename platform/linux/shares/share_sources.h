// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_SHARE_SOURCES_H
#define VORN_PLATFORM_LINUX_SHARES_SHARE_SOURCES_H

#include <memory>

#include "platform/linux/shares/share_table.h"

namespace vornplatform {

/** The host's shares as they are now. Safe from any thread. */
std::shared_ptr<const ShareTable> CurrentShares();

}  // namespace vornplatform

#endif
