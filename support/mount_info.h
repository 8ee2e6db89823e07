// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_MOUNT_INFO_H
#define VORN_SUPPORT_MOUNT_INFO_H

/**
 * @file
 * Lines of `/proc/<pid>/mountinfo`, and names as the kernel writes them in it.
 */

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "support/text.h"

namespace support {

/** A text in which the kernel has put \\ooo for blanks, newlines, backslashes and the like. */
inline std::string UnescapedOctal(std::string_view text) {
    const auto digit = [&text](std::size_t at) {
        return at < text.size() && text[at] >= '0' && text[at] <= '7' ? text[at] - '0' : -1;
    };
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && digit(i + 1) >= 0 && digit(i + 2) >= 0 && digit(i + 3) >= 0) {
            plain += static_cast<char>(digit(i + 1) * 64 + digit(i + 2) * 8 + digit(i + 3));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

/** A mount. What isn't a path is a part of the line. */
struct MountInfo {
    std::string_view id;
    std::string_view parent;
    std::string_view device;  /**< such as "8:1" */
    std::string root;         /**< the path within the file system that is mounted */
    std::string point;        /**< where */
    std::string_view groups;  /**< peer groups, such as "shared:1 master:2" */
    std::string_view type;    /**< such as "ext4" */
    std::string_view options; /**< those of the file system, such as "rw,cpu" */
};

// 36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue
/** Nothing for a line of another form. */
inline std::optional<MountInfo> ParseMountInfo(std::string_view line) {
    MountInfo mount;
    mount.id = TakeUntil(line, ' ');
    mount.parent = TakeUntil(line, ' ');
    mount.device = TakeUntil(line, ' ');
    mount.root = UnescapedOctal(TakeUntil(line, ' '));
    mount.point = UnescapedOctal(TakeUntil(line, ' '));
    TakeUntil(line, ' ');
    if (StartsWith(line, "- ")) {
        line.remove_prefix(1);
    } else {
        const std::size_t end = line.find(" - ");
        mount.groups = line.substr(0, end);
        line.remove_prefix(end == std::string_view::npos ? line.size() : end + 2);
    }
    ConsumePrefix(line, " ");
    mount.type = TakeUntil(line, ' ');
    TakeUntil(line, ' ');
    mount.options = line;
    return mount.point.empty() || mount.type.empty() ? std::nullopt
                                                     : std::optional(std::move(mount));
}

}  // namespace support

#endif
