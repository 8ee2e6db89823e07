// SPDX-License-Identifier: MIT
#include <syslog.h>

#include "src/filehandle_internal.h"
#include "src/prefix_set.h"
#include "vorn/platform/error.h"
#include "vorn/platform/share.h"
#include "vorn/platform/volume.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_filter_path";

int ExtractSharePath(const std::string& fullPath, std::string& path) {
    if (!PathBeginWithVolume(fullPath)) {
        KLIBCErrSetEx(KLIBC_ERR_BAD_PARAM, kSource, 41);
        return -1;
    }
    const size_t volumeEnd = fullPath.find('/', 1);
    path.assign(fullPath, volumeEnd == std::string::npos ? 1 : volumeEnd + 1);
    return 0;
}

int GetSharePathList(StringList& paths) {
    StringList names;
    if (!names) {
        KLIBCErrSetEx(KLIBC_ERR_RESOURCE, kSource, 62);
        syslog(LOG_ERR, "%s:%d Failed to allocate memory for list, vornerr=[0x%04X]", kSource, 63,
               KLIBCErrGet());
        return -1;
    }
    const int count = VORNShareEnum(names.Handle(), VORN_SHARE_ALL);
    if (count < 0) {
        syslog(LOG_ERR, "%s:%d Failed to get share, vornerr=[0x%04X]", kSource, 72, KLIBCErrGet());
        return -1;
    }
    if (count == 0) {
        syslog(LOG_INFO, "%s:%d [fh] In share path list get, not get any share.", kSource, 75);
        return 0;
    }
    // One record for all shares: the platform fills it anew each time and keeps it.
    VORN_SHARE* share = nullptr;
    for (int i = 0; i < names.Count(); ++i) {
        const char* name = names.Get(i);
        if (VORNShareGet(name, &share) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to get share path of share [%s]", kSource, 82, name);
            return -1;
        }
        // Not checked on purpose: a share that can't be stored is left out.
        KLIBCSzListPush(paths.Handle(), share->szPath);
    }
    return 0;
}

int GetVolumePathList(StringList& paths) {
    VORN_MOUNT_VOL_INFO* volume = VORNMountVolAllEnum(0, 3, 2);
    if (volume == nullptr) {
        syslog(LOG_ERR, "%s:%d Failed to enum all mounted volume, vornerr=[0x%04X]", kSource, 98,
               KLIBCErrGet());
        return -1;
    }
    int result = 0;
    for (; volume != nullptr; volume = volume->pNext) {
        if (KLIBCSzListPush(paths.Handle(), volume->szMountPath) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to push to list, vornerr=[0x%04X]", kSource, 110,
                   KLIBCErrGet());
            result = -1;
            break;
        }
    }
    // From where the walk stopped, on purpose: a chain that was walked to its end stays the
    // platform's.
    VORNMountVolInfoFree(volume);
    return result;
}

int GetPrefixes(StringList& prefixes, int enumby) {
    if (enumby == ENUM_BY_SHARE) {
        if (GetSharePathList(prefixes) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to get share path list, vornerr=[0x%04X]", kSource, 139,
                   KLIBCErrGet());
            return -1;
        }
        return 0;
    }
    if (enumby == ENUM_BY_VOLUME) {
        if (GetVolumePathList(prefixes) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to get volume path list, vornerr=[0x%04X]", kSource, 144,
                   KLIBCErrGet());
            return -1;
        }
        return 0;
    }
    syslog(LOG_ERR, "%s:%d Failed to filter path. wrong [enumby] option", kSource, 148);
    return -1;
}

/** Sets path and file name of a record that is kept; path is a buffer. */
int CompleteRecord(OpenedFile& file, int enumby, std::string& path) {
    const std::string& fullPath = RecordTexts::FullPath(file);
    if (enumby != ENUM_BY_SHARE) {
        path = fullPath;
    } else if (ExtractSharePath(fullPath, path) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to extract share path, vornerr=[0x%04X]", kSource, 162,
               KLIBCErrGet());
        return -1;
    }
    if (file.setPath(path) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to set path for opened file", kSource, 170);
        return -1;
    }
    if (file.setFilename(std::string(FileName(fullPath))) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to set filename for opened file", kSource, 174);
        return -1;
    }
    return 0;
}

}  // namespace

std::string_view FileName(std::string_view path) {
    const size_t last = path.rfind('/');
    if (last == std::string_view::npos || (last == 1 && path[0] == '/')) {
        return path;
    }
    if (last + 1 < path.size()) {
        return path.substr(last + 1);
    }
    const size_t separators = path.find_last_not_of('/') + 1;
    const bool afterRootName = path.substr(0, 2) == "//" && path.find('/', 2) == separators;
    return separators == 0 || afterRootName ? "/" : ".";
}

int FilterPath(std::list<OpenedFile>& list, int enumby) {
    StringList prefixList;
    if (!prefixList) {
        syslog(LOG_ERR, "%s:%d Failed to allocate list, vornerr=[0x%04X]", kSource, 129,
               KLIBCErrGet());
        return -1;
    }
    if (GetPrefixes(prefixList, enumby) < 0) {
        return -1;
    }
    // Any match keeps a record, with no regard for where path elements end.
    const PrefixSet prefixes(prefixList.Views());
    std::string path;
    for (auto file = list.begin(); file != list.end();) {
        if (!prefixes.MatchesBeginOf(RecordTexts::FullPath(*file))) {
            file = list.erase(file);
            continue;
        }
        if (CompleteRecord(*file, enumby, path) < 0) {
            return -1;
        }
        ++file;
    }
    return 0;
}

}  // namespace FileHandle
}  // namespace VORN
