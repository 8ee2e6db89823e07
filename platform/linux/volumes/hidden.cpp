// SPDX-License-Identifier: MIT
#include "vorn/platform/hidden.h"

#include <syslog.h>

#include <exception>
#include <string>
#include <vector>

#include "platform/linux/support/fault.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/volumes/hidden_list.h"

namespace {

constexpr char kSource[] = "hidden";

/** Says in the log which file it is that fails the operation. */
std::vector<std::string> ReadList() {
    try {
        return vornplatform::ReadHiddenList();
    } catch (const vornplatform::HostError& error) {
        vornplatform::PassOnShortage(error);
        vornplatform::Log(LOG_ERR, kSource, __LINE__,
                          std::string("Failed to read ") + vornplatform::kHiddenListPath);
        throw;
    }
}

}  // namespace

int VORNEAHiddenDirGet(KLIBC_SZLIST** list) try {
    if (list == nullptr || *list == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    const int before = (*list)->nItem;
    for (const std::string& name : ReadList()) {
        if (KLIBCSzListPush(list, name.c_str()) < 0) {
            (*list)->nItem = before;
            return -1;
        }
    }
    return (*list)->nItem - before;
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}
