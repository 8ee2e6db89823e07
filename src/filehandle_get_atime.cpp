// SPDX-License-Identifier: MIT
#include <sys/stat.h>
#include <syslog.h>
#include <time.h>

#include "src/filehandle_internal.h"
#include "vorn/platform/error.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_get_atime";
constexpr size_t kTimeSize = 128;

int ConvertTime(time_t accessed, char (&text)[kTimeSize]) {
    struct tm fields = {};
    tzset();  // each time, so that a change of the zone shows at once
    localtime_r(&accessed, &fields);
    if (strftime(text, sizeof(text), "%Y/%m/%d %H:%M:%S", &fields) == 0) {
        KLIBCErrSetEx(KLIBC_ERR_RESOURCE, kSource, 27);
        return -1;
    }
    return 0;
}

}  // namespace

int VORNGetLastAccessTime(std::list<OpenedFile>& list) {
    struct stat status = {};
    char text[kTimeSize] = {};
    for (auto file = list.begin(); file != list.end();) {
        const char* path = RecordTexts::FullPath(*file).c_str();
        if (stat(path, &status) != 0) {
            // __extension__: syslog's own %m is not a format of the C++ standard.
            __extension__ syslog(LOG_ERR, "%s:%d Failed to stat file [%s], skipped. error=[%m]",
                                 kSource, 41, path);
            file = list.erase(file);
            continue;
        }
        if (ConvertTime(status.st_atime, text) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to convert time, vornerr=[0x%04X]", kSource, 46,
                   KLIBCErrGet());
            return -1;
        }
        if (file->setTime(text) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to set time for opened file", kSource, 50);
            return -1;
        }
        ++file;
    }
    return 0;
}

}  // namespace FileHandle
}  // namespace VORN
