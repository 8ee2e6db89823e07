// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_CLI_RECORDS_H
#define VORN_TESTS_CLI_RECORDS_H

#include <string>

#include "vorn/filehandle.h"

/** A record as an enumeration leaves it. */
inline VORN::FileHandle::OpenedFile Record(const std::string& fullPath,
                                           const std::string& user = "alice",
                                           const std::string& service = "SMB") {
    VORN::FileHandle::OpenedFile file;
    file.setFullPath(fullPath);
    file.setPath(fullPath);
    file.setFilename(fullPath.substr(fullPath.rfind('/') + 1));
    file.setPid("4711");
    file.setServiceName(service);
    file.setUser(user);
    file.setHost("192.0.2.7");
    return file;
}

#endif
