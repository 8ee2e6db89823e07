// SPDX-License-Identifier: MIT
#include "vorn/platform/process.h"

#include <exception>
#include <memory>

#include "platform/linux/processes/process_reader.h"
#include "platform/linux/support/fault.h"

namespace {

constexpr char kSource[] = "process";

}  // namespace

int KLIBCProcGetByPid(int pid, KLIBC_PROC** process) try {
    if (pid <= 0 || process == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    const auto stat = vornplatform::ReadProcessStat(pid);
    if (!stat) {
        return vornplatform::Fail(KLIBC_ERR_NOT_FOUND, kSource, __LINE__);
    }
    auto record = std::make_unique<KLIBC_PROC>();
    record->ppid = stat->parent;
    *process = record.release();
    return 0;
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}

void KLIBCProcFree(KLIBC_PROC* process) {
    delete process;
}
