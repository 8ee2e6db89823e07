// SPDX-License-Identifier: MIT
#include "cli/question/holders/identity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <climits>

namespace cli {

std::optional<Identity> IdentityAt(int folder, const char* name) {
    struct statx info {};
    // With an empty mask a FUSE file system of another user tells its device nevertheless. All
    // that is wanted comes unasked from the others.
    if (statx(folder, name, AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT, 0, &info) != 0) {
        return std::nullopt;
    }
    Identity identity;
    identity.device = makedev(info.stx_dev_major, info.stx_dev_minor);
    identity.inode = info.stx_ino;
    identity.mount = (info.stx_mask & STATX_MNT_ID) != 0 ? info.stx_mnt_id : 0;
    identity.mode = info.stx_mode;
    identity.linked = (info.stx_mask & STATX_NLINK) == 0 || info.stx_nlink != 0;
    return identity;
}

std::optional<std::string> LinkText(int folder, const char* name) {
    std::array<char, PATH_MAX> text;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t length = readlinkat(folder, name, text.data(), text.size());
    if (length < 0) {
        return std::nullopt;
    }
    return std::string(text.data(), static_cast<size_t>(length));
}

}  // namespace cli
