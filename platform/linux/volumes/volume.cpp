// SPDX-License-Identifier: MIT
#include "vorn/platform/volume.h"

#include <syslog.h>

#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "platform/linux/support/fault.h"
#include "platform/linux/support/per_thread.h"
#include "platform/linux/volumes/volume_table.h"

namespace {

constexpr char kSource[] = "volume";

using Chain = std::vector<VORN_MOUNT_VOL_INFO>;

/** Callers walk the chain and leave it; it stays until the thread asks again or ends. */
vornplatform::PerThread<Chain> chainOfThread;

bool Fits(const std::string& volume) {
    if (volume.size() < sizeof(VORN_MOUNT_VOL_INFO::szMountPath)) {
        return true;
    }
    vornplatform::Log(LOG_WARNING, kSource, __LINE__,
                      "Skipped a volume whose path is too long: " + vornplatform::Escape(volume));
    return false;
}

Chain MakeChain(const std::vector<std::string>& volumes) {
    Chain chain;
    for (const std::string& volume : volumes) {
        if (!Fits(volume)) {
            continue;
        }
        VORN_MOUNT_VOL_INFO record = {};
        std::memcpy(record.szMountPath, volume.c_str(), volume.size() + 1);
        chain.push_back(record);
    }
    for (size_t i = 1; i < chain.size(); ++i) {
        chain[i - 1].pNext = &chain[i];
    }
    return chain;
}

}  // namespace

VORN_MOUNT_VOL_INFO* VORNMountVolAllEnum(int /*type*/, int /*state*/, int /*flags*/) try {
    Chain& lastChain = chainOfThread.Get();
    lastChain.clear();
    lastChain = MakeChain(vornplatform::ReadVolumes());
    if (lastChain.empty()) {
        vornplatform::Fail(KLIBC_ERR_NOT_FOUND, kSource, __LINE__);
    }
    return lastChain.empty() ? nullptr : lastChain.data();
} catch (const std::exception& exception) {
    vornplatform::FailCaught(exception, kSource, __LINE__);
    return nullptr;
}

// Nothing to do: the chain belongs to the thread, because callers that walk it to its end hand
// nothing back.
void VORNMountVolInfoFree(VORN_MOUNT_VOL_INFO* /*volume*/) {}
