#ifndef VORN_PLATFORM_LINUX_SUPPORT_FOLDER_H
#define VORN_PLATFORM_LINUX_SUPPORT_FOLDER_H

#include <dirent.h>

#include <cerrno>
#include <memory>

#include "platform/linux/support/shortage.h"

namespace vornplatform {

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

/** Owner of an open folder. */
using Folder = std::unique_ptr<DIR, FolderCloser>;

/** opendir, but for memory or descriptors that are short: then std::bad_alloc. */
inline Folder OpenFolder(const char* path) {
    Folder folder(opendir(path));
    if (!folder) {
        ThrowOnShortage(errno);
    }
    return folder;
}

/** The next entry, valid until the one after it; null at the end. */
inline const dirent* NextEntry(const Folder& folder) {
    // cppcheck-suppress readdirCalled ; unsafe only where threads share one DIR, and readdir_r is
    // deprecated
    return readdir(folder.get());
}

}  // namespace vornplatform

#endif
