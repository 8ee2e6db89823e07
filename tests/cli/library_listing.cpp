// SPDX-License-Identifier: MIT
/*
 * What the library's own call lists, a record a line, as the command's format csv has its columns
 * full_path, pid, service, host, user, path, filename, hidden and folder; by share or, with an
 * argument, by volume. Names must need no quotes.
 */

#include <cstdio>

#include "vorn/filehandle.h"

int main(int argc, char** /*argv*/) {
    std::list<VORN::FileHandle::OpenedFile> files;
    if (VORN::FileHandle::EnumOpenedFile(files, argc > 1 ? VORN::FileHandle::ENUM_BY_VOLUME
                                                         : VORN::FileHandle::ENUM_BY_SHARE) < 0) {
        return 2;
    }
    for (VORN::FileHandle::OpenedFile& file : files) {
        std::printf("%s,%s,%s,%s,%s,%s,%s,%s,%s\r\n", file.getFullPath().c_str(),
                    file.getPidStr().c_str(), file.getService().c_str(), file.getHost().c_str(),
                    file.getUser().c_str(), file.getPath().c_str(), file.getFilename().c_str(),
                    file.isHidden() ? "yes" : "no", file.isFolder() ? "yes" : "no");
    }
    return 0;
}
