// SPDX-License-Identifier: MIT
#include "cli/host/asker.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

#include "cli/text/escape.h"
#include "support/process_text.h"
#include "support/read_file.h"

namespace cli {

std::string Asker() {
    std::string asker = fmt::format("uid {}", getuid());
    // Kept by the kernel since the login, whatever the user has become meanwhile.
    if (const auto login = support::ParseAuditId(support::ReadFile("/proc/self/loginuid"))) {
        asker += fmt::format(", login uid {}", *login);
    }
    if (const char* user = std::getenv("SUDO_USER"); user != nullptr && *user != '\0') {
        asker += ", sudo user " + Escaped(user, true);
    }
    return asker;
}

}  // namespace cli
