// SPDX-License-Identifier: MIT
// What the library itself says: process, service and full path of each file, one a line.
#include <vorn/filehandle.h>

#include <iostream>

int main() {
    std::list<VORN::FileHandle::OpenedFile> files;
    if (VORN::FileHandle::EnumOpenedFile(files, VORN::FileHandle::ENUM_BY_VOLUME) != 0) {
        return 1;
    }
    for (auto& file : files) {
        std::cout << file.getPidStr() << '\t' << file.getService() << '\t' << file.getFullPath()
                  << '\n';
    }
}
