// SPDX-License-Identifier: MIT
#include "platform/linux/shares/share_sources.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/shares/exported_shares.h"
#include "platform/linux/shares/share_folders.h"
#include "platform/linux/shares/share_paths.h"
#include "platform/linux/support/lost_sources.h"

namespace vornplatform {
namespace {

using Clock = std::chrono::steady_clock;

/** A testparm that hangs must not cost every enumeration its 2 seconds. */
constexpr std::chrono::seconds kRetryAfter(60);

bool AreSame(const std::vector<Share>& a, const std::vector<Share>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Share& x, const Share& y) {
        return x.path == y.path && x.name == y.name && x.server == y.server;
    });
}

void NoteLosses(const std::vector<std::string>& losses) {
    if (losses.empty()) {
        NoteWell(Source::kExportedShares);
        return;
    }
    std::string text = losses.front();
    for (size_t i = 1; i < losses.size(); ++i) {
        text += "; " + losses[i];
    }
    NoteLost(Source::kExportedShares, text,
             "mend it ('testparm -s' shows what Samba says), or ask with --by volume");
}

/** What the host exports, read again when one of its files has changed; paths are followed anew
 *  each time, since any folder above a share may have become a link. */
class Memory {
public:
    std::shared_ptr<const ShareTable> Get() {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!IsValid()) {
            Read();
        }
        std::vector<Share> shares = SharesOnVolumes(written_);
        if (!table_ || !AreSame(shares, resolved_)) {
            table_ = std::make_shared<const ShareTable>(shares);
            resolved_ = std::move(shares);
        }
        return table_;
    }

private:
    bool IsValid() const {
        return isRead_ && watch_.IsUnchanged() &&
               (complete_ || Clock::now() < readAt_ + kRetryAfter);
    }

    void Read() {
        isRead_ = false;
        ExportedShares exported = ReadExportedShares();
        NoteLosses(exported.losses);
        written_ = std::move(exported.shares);
        watch_ = std::move(exported.watch);
        complete_ = exported.losses.empty();
        readAt_ = Clock::now();
        isRead_ = true;
    }

    std::mutex mutex_;
    std::vector<Share> written_;
    std::vector<Share> resolved_;
    std::shared_ptr<const ShareTable> table_; /**< of the resolved ones */
    FileWatch watch_;
    bool isRead_ = false;
    bool complete_ = true;
    Clock::time_point readAt_;
};

}  // namespace

std::shared_ptr<const ShareTable> CurrentShares() {
    static Memory memory;
    std::shared_ptr<const ShareTable> exported = memory.Get();
    if (!exported->Shares().empty()) {
        return exported;
    }
    return std::make_shared<const ShareTable>(FolderShares());
}

}  // namespace vornplatform
