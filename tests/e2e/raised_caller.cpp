// SPDX-License-Identifier: MIT
// Lists the open files by share from a caller of the given user, whose rights are raised from its
// saved root user, as a management service does that gives its rights back between calls:
//
//   raised_caller UID
//
// Prints one line "PATH HOST USER" a record. The command can't stand in for it: the execution of a
// program makes the saved user the effective one.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <list>

#include "vorn/filehandle.h"

int main(int argc, char** argv) {
    const id_t id = argc == 2 ? static_cast<id_t>(std::atoi(argv[1])) : 0;
    if (id == 0 || setresgid(id, id, 0) != 0 || setresuid(id, id, 0) != 0)
        return 2;
    std::list<VORN::FileHandle::OpenedFile> files;
    const int result = VORN::FileHandle::VORNEnumOpenedFile(files, VORN::FileHandle::ENUM_BY_SHARE);
    for (VORN::FileHandle::OpenedFile& file : files)
        std::printf("%s %s %s\n", file.getFullPath().c_str(), file.getHost().c_str(),
                    file.getUser().c_str());
    return result == 0 && geteuid() == id ? 0 : 1;
}
