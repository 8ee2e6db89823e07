// SPDX-License-Identifier: MIT
#include "vorn/platform/share.h"

#include <exception>
#include <memory>
#include <string>

#include "platform/linux/shares/share_sources.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/support/per_thread.h"

namespace {

constexpr char kSource[] = "share";

/**
 * The shares that this thread was told of last, and the record that it got last. Callers never
 * release a record, so there is one a thread, filled anew by each call.
 */
struct Last {
    std::shared_ptr<const vornplatform::ShareTable> table;
    VORN_SHARE record = {};
};

vornplatform::PerThread<Last> lastOfThread;

int PushNames(const vornplatform::ShareTable& table, KLIBC_SZLIST** names) {
    const int before = (*names)->nItem;
    for (const vornplatform::Share& share : table.Shares()) {
        if (KLIBCSzListPush(names, share.name.c_str()) < 0) {
            (*names)->nItem = before;
            return -1;
        }
    }
    return (*names)->nItem - before;
}

}  // namespace

int VORNShareEnum(KLIBC_SZLIST** names, int /*flags*/) try {
    if (names == nullptr || *names == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    Last& last = lastOfThread.Get();
    last.table = vornplatform::CurrentShares();
    return PushNames(*last.table, names);
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}

int VORNShareGet(const char* name, VORN_SHARE** share) try {
    if (name == nullptr || share == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    Last& last = lastOfThread.Get();
    if (!last.table) {
        last.table = vornplatform::CurrentShares();
    }
    const vornplatform::Share* found = last.table->Find(name);
    if (found == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_NOT_FOUND, kSource, __LINE__);
    }
    last.record.szPath = found->path.c_str();
    *share = &last.record;
    return 0;
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}
