// SPDX-License-Identifier: MIT
// A file of "net usershare". As its reader does, without zero bytes.

#include "fuzz/share_checks.h"
#include "platform/linux/shares/samba_dump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = TextOf(data, size);
    if (text.find('\0') != std::string_view::npos) {
        return 0;
    }
    if (const auto share = vornplatform::ParseUsershare("file name", text)) {
        CheckShares({*share});
    }
    return 0;
}
