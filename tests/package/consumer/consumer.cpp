// SPDX-License-Identifier: MIT
#include <vorn/filehandle.h>

#include <iostream>

int main() {
    std::list<VORN::FileHandle::OpenedFile> files;
    if (VORN::FileHandle::VORNEnumOpenedFile(files, VORN::FileHandle::ENUM_BY_VOLUME) != 0) {
        return 1;
    }
    for (auto& file : files) {
        std::cout << file.getPidStr() << " " << file.getPath() << "\n";
    }
}
