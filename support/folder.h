// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_FOLDER_H
#define VORN_SUPPORT_FOLDER_H

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <memory>

#include "support/descriptor.h"

namespace support {

/** Opens a folder to list it; without one errno says why. Never waits for a FIFO or a device. */
inline Descriptor OpenFolder(const char* path) {
    return Descriptor(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
}

inline bool IsDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

/** Whether an entry is a folder itself; a symbolic link to one is none. */
inline bool IsFolder(int folder, const dirent64& entry) {
    if (entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_DIR;
    }
    struct stat info {};
    return fstatat(folder, entry.d_name, &info, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0 &&
           S_ISDIR(info.st_mode);
}

/**
 * Calls visit(const dirent64&) for each entry of a folder but "." and "..", in the kernel's order,
 * until it returns false. Throws std::bad_alloc when memory is short.
 *
 * @return 0, or the errno value of a folder that couldn't be read to its end
 */
template <typename Visit>
int VisitFolder(int folder, Visit visit) {
    // Some 2,700 descriptors of a process, or 10,000 of them in four calls.
    constexpr std::size_t kBufferSize = std::size_t{64} * 1024;
    const std::unique_ptr<char[]> buffer(new char[kBufferSize]);
    for (;;) {
        const ssize_t size = getdents64(folder, buffer.get(), kBufferSize);
        if (size <= 0) {
            return size == 0 ? 0 : errno;
        }
        for (ssize_t at = 0; at < size;) {
            const auto& entry = *reinterpret_cast<const dirent64*>(buffer.get() + at);
            at += entry.d_reclen;
            if (!IsDotOrDotDot(entry.d_name) && !visit(entry)) {
                return 0;
            }
        }
    }
}

}  // namespace support

#endif
