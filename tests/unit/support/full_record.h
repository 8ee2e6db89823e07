// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_FULL_RECORD_H
#define VORN_TESTS_UNIT_SUPPORT_FULL_RECORD_H

#include "vorn/filehandle.h"

/** A record whose column texts are their own names in upper case. */
inline VORN::FileHandle::OpenedFile FullRecord() {
    VORN::FileHandle::OpenedFile file;
    file.setServiceName("SERVICE");
    file.setPid("PID");
    file.setUser("USER");
    file.setHost("HOST");
    file.setPath("PATH");
    file.setFilename("FILENAME");
    file.setTime("TIME");
    file.setFullPath("FULLPATH");
    return file;
}

#endif
