// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <exception>

#include "platform/linux/support/fault.h"
#include "support/folder.h"
#include "vorn/platform/file.h"

namespace {

using vornplatform::Fail;
using vornplatform::FailErrno;

constexpr char kSource[] = "directory";

int CheckDirWaiting(const char* path) {
    struct stat info;
    if (stat(path, &info) != 0) {
        return FailErrno(errno, kSource, __LINE__);
    }
    return S_ISDIR(info.st_mode) ? 1 : 0;
}

/** What says that statx or one of its flags is not to be had, rather than the path. */
bool IsRefusal(int error) {
    return error == ENOSYS || error == EINVAL || error == EPERM;
}

}  // namespace

int KLIBCFileEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options) try {
    if (path == nullptr || pattern != nullptr || list == nullptr || *list == nullptr ||
        (options & ~KLIBC_ENUM_DIRECTORIES) != 0) {
        return Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    const support::Descriptor folder = support::OpenFolder(path);
    if (!folder) {
        return FailErrno(errno, kSource, __LINE__);
    }
    const bool foldersAlone = (options & KLIBC_ENUM_DIRECTORIES) != 0;
    const int before = (*list)->nItem;
    bool stored = true;
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        if (!foldersAlone || support::IsFolder(folder.Get(), entry)) {
            stored = KLIBCSzListPush(list, entry.d_name) >= 0;
        }
        return stored;
    });
    if (stored && error == 0) {
        return (*list)->nItem - before;
    }
    (*list)->nItem = before;
    return stored ? FailErrno(error, kSource, __LINE__) : -1;
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}

int KLIBCFileCheckDir(const char* path) {
    if (path == nullptr) {
        return Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    struct statx info;
    if (statx(AT_FDCWD, path, AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT, STATX_TYPE, &info) != 0) {
        return IsRefusal(errno) ? CheckDirWaiting(path) : FailErrno(errno, kSource, __LINE__);
    }
    if ((info.stx_mask & STATX_TYPE) == 0) {
        return CheckDirWaiting(path);
    }
    return S_ISDIR(info.stx_mode) ? 1 : 0;
}
