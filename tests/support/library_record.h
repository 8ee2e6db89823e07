// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_SUPPORT_LIBRARY_RECORD_H
#define VORN_TESTS_SUPPORT_LIBRARY_RECORD_H

#include <string>

#include "cli/question/record.h"

/** The library's record of the same, for one that has every text but a time. */
inline VORN::FileHandle::OpenedFile OfLibrary(const cli::FileRecord& record) {
    VORN::FileHandle::OpenedFile file;
    file.setPid(record.process->pid);
    file.setServiceName(record.process->service);
    file.setUser(record.process->user);
    file.setHost(record.process->host);
    file.setFullPath(std::string(record.fullPath));
    file.setPath(std::string(record.path));
    file.setFilename(std::string(record.filename));
    if (!record.time.empty()) {
        file.setTime(std::string(record.time));
    }
    if (record.hidden) {
        file.setIsHidden();
    }
    if (record.folder) {
        file.setIsFolder();
    }
    return file;
}

#endif
