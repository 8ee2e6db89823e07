#include "platform/linux/files/folder_names.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/linux/support/folder.h"

namespace vornplatform {
namespace {

bool IsDirectory(DIR* folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_DIR;
    }
    struct stat info;
    return fstatat(dirfd(folder), entry.d_name, &info, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) ==
               0 &&
           S_ISDIR(info.st_mode);
}

bool IsDotOrDotDot(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

}  // namespace

int ReadFolderNames(const std::string& path, FolderEntries kind, std::vector<std::string>& names) {
    const Folder folder = OpenFolder(path.c_str());
    if (!folder) {
        return errno;
    }
    while (const dirent* entry = NextEntry(folder)) {
        const bool wanted = kind == FolderEntries::kAll || IsDirectory(folder.get(), *entry);
        if (wanted && !IsDotOrDotDot(entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end());
    return 0;
}

}  // namespace vornplatform
