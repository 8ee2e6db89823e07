// SPDX-License-Identifier: MIT
// What testparm prints and smb.conf itself.

#include "fuzz/share_checks.h"
#include "platform/linux/shares/samba_dump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = TextOf(data, size);
    if (const auto dump = vornplatform::ParseSambaDump(text)) {
        CheckShares(dump->shares);
    }
    for (const std::string& file : vornplatform::IncludedFiles(text)) {
        Must(file.front() == '/' && file.find('%') == std::string::npos);
    }
    return 0;
}
