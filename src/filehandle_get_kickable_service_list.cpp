// SPDX-License-Identifier: MIT
#include <syslog.h>

#include "src/filehandle_internal.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_get_kickable_service_list";

}  // namespace

const char* const gszKickableServiceTable[5] = {
    "SMBService.slice", "atalk.slice", "ftpd.slice", "sshd.slice", "inetd.slice",
};

void GetKickableServiceList(std::list<std::string>& services) {
    std::unordered_map<std::string, std::string> texts;
    std::string name;
    for (const char* unit : gszKickableServiceTable) {
        if (NameI18nGet(unit, name, texts) || NameGet(unit, name)) {
            services.push_back(name);
        } else {
            syslog(LOG_ERR, "%s:%d Get kickable service list error. service:[%s]", kSource, 47,
                   unit);
        }
    }
}

}  // namespace FileHandle
}  // namespace VORN
