// SPDX-License-Identifier: MIT
#include <syslog.h>

#include "src/filehandle_internal.h"
#include "src/prefix_set.h"
#include "vorn/platform/file.h"
#include "vorn/platform/hidden.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_label_hidden";

}  // namespace

int LabelHidden(std::list<OpenedFile>& list) {
    StringList directories;
    if (!directories) {
        syslog(LOG_ERR, "%s:%d Failed to allocate list", kSource, 20);
        return -1;
    }
    if (VORNEAHiddenDirGet(directories.Handle()) < 0) {
        syslog(LOG_ERR, "%s:%d Failed to get hidden dir", kSource, 31);
        return -1;
    }
    const PrefixSet hidden(directories.Views());
    for (OpenedFile& file : list) {
        if (hidden.MatchesInside(RecordTexts::FullPath(file))) {
            file.setIsHidden();
        }
    }
    return 0;
}

int LabelFolder(std::list<OpenedFile>& list) {
    for (OpenedFile& file : list) {
        if (KLIBCFileCheckDir(RecordTexts::FullPath(file).c_str()) == 1) {
            file.setIsFolder();
        }
    }
    return 0;
}

}  // namespace FileHandle
}  // namespace VORN
