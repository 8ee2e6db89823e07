// SPDX-License-Identifier: MIT
// What smbstatus prints.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/connections/smb_status.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto users = vornplatform::ParseSmbStatus({reinterpret_cast<const char*>(data), size});
    for (const auto& [pid, names] : users.value_or(vornplatform::SmbUsers())) {
        if (pid <= 0 || names.empty()) {
            std::abort();
        }
        for (const std::string& name : names) {
            if (name.empty() || name.find('\0') != std::string::npos) {
                std::abort();
            }
        }
    }
    return 0;
}
