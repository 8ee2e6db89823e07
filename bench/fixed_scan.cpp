// SPDX-License-Identifier: MIT
// One whole enumeration of 10,000 records over a platform that answers from memory: always the
// same work, for counting its instructions.

#include <stdio.h>

#include "bench/memory_platform.h"
#include "vorn/filehandle.h"

int main() {
    Platform().processes = 40;
    Platform().descriptors = 250;
    Platform().connections = 20;
    Platform().shares = {"/volume1/music", "/volume1/photo", "/volume2/docs"};
    Platform().hidden = {"/lost+found", "/.snapshot", "/.zfs"};
    std::list<VORN::FileHandle::OpenedFile> files;
    const int result = VORN::FileHandle::EnumOpenedFile(files, VORN::FileHandle::ENUM_BY_SHARE);
    printf("%zu\n", files.size());
    return result == 0 && files.size() == 10000 ? 0 : 2;
}
