#include "vorn/platform/hidden.h"

#include <syslog.h>

#include <exception>
#include <string>
#include <vector>

#include "platform/linux/support/fault.h"
#include "platform/linux/volumes/hidden_names.h"

namespace {

constexpr char kSource[] = "hidden";

}  // namespace

int VORNEAHiddenDirGet(KLIBC_SZLIST** list) try {
    if (list == nullptr || *list == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    std::vector<std::string> names;
    if (const int error = vornplatform::ReadHiddenNames(names); error != 0) {
        vornplatform::Log(LOG_ERR, kSource, __LINE__,
                          std::string("Failed to read ") + vornplatform::kHiddenListPath);
        return vornplatform::Fail(error, kSource, __LINE__);
    }
    const int before = (*list)->nItem;
    for (const std::string& name : names) {
        if (KLIBCSzListPush(list, name.c_str()) < 0) {
            (*list)->nItem = before;
            return -1;
        }
    }
    return (*list)->nItem - before;
} catch (const std::exception&) {
    return vornplatform::Fail(KLIBC_ERR_RESOURCE, kSource, __LINE__);
}
