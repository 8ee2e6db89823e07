#include "platform/linux/shares/share_sources.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/shares/exported_shares.h"
#include "platform/linux/shares/share_folders.h"

namespace vornplatform {
namespace {

using Clock = std::chrono::steady_clock;

/** A testparm that hangs must not cost every enumeration its 2 seconds. */
constexpr std::chrono::seconds kRetryAfter(60);

/** What the host exports, read again when one of its files has changed. */
class Memory {
public:
    std::shared_ptr<const ShareTable> Get() {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!IsValid()) {
            Read();
        }
        return table_;
    }

private:
    bool IsValid() const {
        return table_ && watch_.IsUnchanged() &&
               (complete_ || Clock::now() < readAt_ + kRetryAfter);
    }

    void Read() {
        table_.reset();
        ExportedShares exported = ReadExportedShares();
        watch_ = std::move(exported.watch);
        complete_ = exported.complete;
        readAt_ = Clock::now();
        table_ = std::make_shared<const ShareTable>(std::move(exported.shares));
    }

    std::mutex mutex_;
    std::shared_ptr<const ShareTable> table_;
    FileWatch watch_;
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
