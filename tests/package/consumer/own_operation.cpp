// SPDX-License-Identifier: MIT
// Supplies one of the platform's operations itself: the library has to call this one.
#include <vorn/filehandle.h>
#include <vorn/platform/file.h>

#include <iostream>

__attribute__((visibility("default"))) int KLIBCFileCheckDir(const char* path) {
    std::cout << "asked for " << path << '\n';
    return 1;
}

int main() {
    std::list<VORN::FileHandle::OpenedFile> files(1);
    files.front().setFullPath("/volume1/no/such/folder");
    VORN::FileHandle::LabelFolder(files);
    std::cout << "folder: " << files.front().isFolder() << '\n';
}
