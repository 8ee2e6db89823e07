// SPDX-License-Identifier: MIT
#include "cli/question/holders/visibility.h"

#include <fcntl.h>
#include <unistd.h>

namespace cli {

void Visibility::Find(const Targets& /*targets*/, Wanted /*wanted*/, Holders& holders) {
    // PROC_PID_INIT_INO, the same on every kernel.
    constexpr ino_t kFirstNamespace = 0xEFFFFFFC;
    const auto own = IdentityAt(AT_FDCWD, "/proc/self/ns/pid");
    const bool ownProc = LinkText(AT_FDCWD, "/proc/self") == std::to_string(getpid());
    if (!own || !ownProc) {
        holders.lost.emplace_back("/proc isn't that of this PID namespace");
    } else if (own->inode != kFirstNamespace && !inside_) {
        holders.lost.emplace_back(
            "this is a PID namespace, which hides the processes outside of it (with --inside they "
            "are left out of account)");
    }
    if (!IdentityAt(AT_FDCWD, "/proc/1")) {
        holders.lost.emplace_back("/proc hides the processes of others (mount option hidepid)");
    }
}

}  // namespace cli
