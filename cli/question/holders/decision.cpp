// SPDX-License-Identifier: MIT
#include "cli/question/holders/decision.h"

namespace cli {

Identity IdentityOf(const HeldFile& file) {
    Identity identity;
    identity.device = file.device;
    identity.inode = file.inode;
    identity.mount = static_cast<MountId>(file.mount);
    identity.mode = file.mode;
    identity.deleted = file.deleted;
    return identity;
}

Decision::Decision(const Targets& targets, Wanted wanted, const std::vector<pid_t>& pids)
    : targets_(targets), isWanted_(wanted == Wanted::kWhether) {
    if (isWanted_) {
        pids_.insert(pids.begin(), pids.end());
    }
}

bool Decision::Take(const HeldFile& file) {
    if (!isWanted_ || made_) {
        return made_;
    }
    const Identity identity = IdentityOf(file);
    if (file.isInnerPath || pids_.count(file.pid) == 0 ||
        !targets_.IsToldByMount(identity.mount, identity.inode)) {
        return false;
    }
    const Place place = targets_.PlaceOf(identity, [&] {
        return file.path.empty() ? std::nullopt : std::optional<std::string>(file.path);
    });
    if (place.kind != Place::kInside) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    found_.emplace();
    found_->reason = file.descriptor < 0 ? Reason::kMapping : Reason::kFile;
    found_->pid = file.pid;
    found_->unnamed = 1;
    made_ = true;
    return true;
}

std::optional<Holder> Decision::Found() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return found_;
}

}  // namespace cli
