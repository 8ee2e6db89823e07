// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SOURCES_WALK_SOURCE_H
#define VORN_CLI_QUESTION_SOURCES_WALK_SOURCE_H

#include <atomic>
#include <mutex>

#include "cli/host/bare_volume_guard.h"
#include "cli/question/sources/record_source.h"
#include "support/owner.h"
#include "vorn/platform/string_list.h"

namespace cli {

/**
 * The library's own walk of /proc, a process a portion.
 *
 * The command stands before KLIBCFileEnumDir: a thread that takes a portion sees a /proc of one
 * process. So what is read, and what of it fails or is logged, stays the library's. One at a time.
 */
class WalkSource : public RecordSource {
public:
    int Next(Files& records, RecordTexts& texts) override;
    std::string Notice() const override { return guard_.Notice(); }

    /** What a thread that takes a portion sees in /proc, as KLIBCFileEnumDir gives it. */
    int TakeProcess(KLIBC_SZLIST** list, int options);

private:
    bool IsOver();
    int ListProcesses(int options);

    BareVolumeGuard guard_;
    std::atomic<bool> ended_ = false;
    std::mutex mutex_; /**< of what follows */
    support::Owner<KLIBC_SZLIST, KLIBCSzListFree> processes_;
    int next_ = 0;
};

}  // namespace cli

#endif
