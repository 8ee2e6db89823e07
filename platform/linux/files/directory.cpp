#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>

#include "platform/linux/support/fault.h"
#include "platform/linux/support/fd.h"
#include "vorn/platform/file.h"

namespace {

using vornplatform::Fail;
using vornplatform::FailErrno;
using vornplatform::Fd;

constexpr char kSource[] = "directory";

/** Some 2,700 descriptors, or 10,000 of them in four calls. */
constexpr size_t kBufferSize = 64 * 1024;

bool IsDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool IsDirectory(int folder, const dirent64& entry) {
    if (entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_DIR;
    }
    struct stat info;
    return fstatat(folder, entry.d_name, &info, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0 &&
           S_ISDIR(info.st_mode);
}

/** Appends what one buffer holds. */
int Append(int folder, const char* buffer, ssize_t size, KLIBC_SZLIST** list, int options) {
    for (ssize_t at = 0; at < size;) {
        const auto& entry = *reinterpret_cast<const dirent64*>(buffer + at);
        at += entry.d_reclen;
        if (IsDotOrDotDot(entry.d_name)) {
            continue;
        }
        if ((options & KLIBC_ENUM_DIRECTORIES) != 0 && !IsDirectory(folder, entry)) {
            continue;
        }
        if (KLIBCSzListPush(list, entry.d_name) < 0) {
            return -1;
        }
    }
    return 0;
}

int AppendAll(int folder, KLIBC_SZLIST** list, int options) {
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[kBufferSize]);
    if (!buffer) {
        return Fail(KLIBC_ERR_RESOURCE, kSource, __LINE__);
    }
    for (;;) {
        const ssize_t size = getdents64(folder, buffer.get(), kBufferSize);
        if (size == 0) {
            return 0;
        }
        if (size < 0) {
            return FailErrno(errno, kSource, __LINE__);
        }
        if (Append(folder, buffer.get(), size, list, options) < 0) {
            return -1;
        }
    }
}

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

int KLIBCFileEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options) {
    if (path == nullptr || pattern != nullptr || list == nullptr || *list == nullptr ||
        (options & ~KLIBC_ENUM_DIRECTORIES) != 0) {
        return Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    const Fd folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    if (!folder) {
        return FailErrno(errno, kSource, __LINE__);
    }
    const int before = (*list)->nItem;
    if (AppendAll(folder.Get(), list, options) < 0) {
        (*list)->nItem = before;
        return -1;
    }
    return (*list)->nItem - before;
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
