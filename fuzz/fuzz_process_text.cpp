// SPDX-License-Identifier: MIT
// What /proc says of a process: stat, status, loginuid and links of descriptors and executables.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/processes/process_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto stat = vornplatform::ParseProcessStat(text); stat && stat->parent < 0) {
        std::abort();
    }
    vornplatform::ParseProcessUsers(text);
    vornplatform::ParseSocketLink(text);
    for (const pid_t child : vornplatform::ParseChildren(text)) {
        if (child <= 0) {
            std::abort();
        }
    }
    if (vornplatform::ParseAuditId(text) == std::uint32_t{4294967295}) {
        std::abort();
    }
    if (vornplatform::ExecutableName(text).find('/') != std::string_view::npos) {
        std::abort();
    }
    return 0;
}
