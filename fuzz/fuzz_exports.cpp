// SPDX-License-Identifier: MIT
// The text of /etc/exports. As its reader does, without zero bytes.

#include "fuzz/share_checks.h"
#include "platform/linux/shares/nfs_exports.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = TextOf(data, size);
    if (text.find('\0') == std::string_view::npos) {
        CheckShares(vornplatform::ParseExports(text));
    }
    return 0;
}
