// SPDX-License-Identifier: MIT
#include <errno.h>
#include <stdlib.h>
#include <sys/types.h>
#include <syslog.h>
#include <unistd.h>

#include "src/filehandle_internal.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_enum";
constexpr uid_t kKeepUser = static_cast<uid_t>(-1);
constexpr gid_t kKeepGroup = static_cast<gid_t>(-1);

struct Identities {
    uid_t user;
    gid_t group;
};

Identities CurrentIdentities() {
    return {geteuid(), getegid()};
}

bool SetUser(uid_t user) {
    return setresuid(kKeepUser, user, kKeepUser) == 0;
}
bool SetGroup(gid_t group) {
    return setresgid(kKeepGroup, group, kKeepGroup) == 0;
}

bool RaiseToRoot(const Identities& saved) {
    if (saved.group != 0 && !SetGroup(0)) {
        return false;
    }
    return saved.user == 0 || SetUser(0);
}

bool RestoreTo(const Identities& saved) {
    const Identities current = CurrentIdentities();
    const bool groupChanged = saved.group != current.group;
    if (saved.user == current.user) {
        return !groupChanged || SetGroup(saved.group);
    }
    // Changing the group needs root, so the user goes back last.
    return SetUser(0) && (!groupChanged || SetGroup(saved.group)) && SetUser(saved.user);
}

}  // namespace

// cppcheck-suppress passedByValue ; the exported signature
bool IsNumericalDir(std::string name) {
    return strtol(name.c_str(), nullptr, 10) != 0;
}

bool PathBeginWithVolume(const std::string& path) {
    static constexpr char kVolume[] = "/volume";
    static constexpr size_t kLength = sizeof(kVolume) - 1;
    if (path.compare(0, kLength, kVolume) != 0) {
        return false;
    }
    if (path.size() == kLength) {
        // Beyond the end: throws for the bare "/volume", as callers are told to expect.
        return !path.substr(kLength + 1).empty();
    }
    return path.find('/', kLength + 1) != std::string::npos;
}

void VORNSortOpenedFile(std::list<OpenedFile>& list, std::string column, bool ascending) {
    list.sort(OpenedFile::Compare(column, ascending));
}

int EraseAdjacentDuplicates(std::list<OpenedFile>& list) {
    std::string path;
    std::string pid;
    for (auto file = list.begin(); file != list.end();) {
        const std::string& filePath = RecordTexts::FullPath(*file);
        const std::string& filePid = RecordTexts::Column(*file, MEMBER_PID);
        if (filePath == path && filePid == pid) {
            file = list.erase(file);
            continue;
        }
        path = filePath;
        pid = filePid;
        ++file;
    }
    return 0;
}

int EnumOpenedFile(std::list<OpenedFile>& list, int enumby) {
    const OpenedFile::Compare byPath("path", true);

    if (GetProcOpenedFileInVolume(list) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to get proc opened file for file handle", kSource, 24);
        return -1;
    }
    if (FilterPath(list, enumby) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to filter path for file handle", kSource, 29);
        return -1;
    }
    if (GetServiceName(list) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to get service name for file handle", kSource, 34);
        return -1;
    }
    if (UpdateConnectionInfo(list) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to update connection info for file handle", kSource, 39);
        return -1;
    }
    list.sort(byPath);
    if (EraseAdjacentDuplicates(list) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to erase duplicate entries for file handle", kSource, 46);
        return -1;
    }
    if (LabelHidden(list) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to label hidden for file handle", kSource, 51);
        return -1;
    }
    if (LabelFolder(list) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to label folder for file handle", kSource, 56);
        return -1;
    }
    return 0;
}

int VORNEnumOpenedFile(std::list<OpenedFile>& list, int enumby) {
    const Identities saved = CurrentIdentities();

    if (RaiseToRoot(saved)) {
        errno = 0;
    } else {
        errno = EPERM;
        syslog(LOG_AUTH | LOG_ERR, "%s:%d ERROR: ENTERCriticalSection", kSource, 67);
    }

    // An exception passes through and leaves the identities raised: that is the contract.
    const int result = EnumOpenedFile(list, enumby);

    if (RestoreTo(saved)) {
        errno = 0;
    } else {
        errno = EPERM;
        syslog(LOG_AUTH | LOG_ERR, "%s:%d ERROR: LEAVECriticalSection", kSource, 69);
        errno = EPERM;  // syslog may have changed it, and callers read it
    }
    return result;
}

}  // namespace FileHandle
}  // namespace VORN
