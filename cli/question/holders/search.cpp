// SPDX-License-Identifier: MIT
#include "cli/question/holders/search.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <set>

#include "cli/failure.h"
#include "cli/host/processors.h"
#include "cli/question/holders/block_devices.h"
#include "cli/question/holders/mounts_below.h"
#include "cli/question/holders/nfs_clients.h"
#include "cli/question/holders/nfs_exports.h"
#include "cli/question/holders/nfs_locks.h"
#include "cli/question/holders/process_names.h"
#include "cli/question/holders/process_source.h"
#include "cli/question/holders/swap_files.h"
#include "cli/question/holders/visibility.h"

namespace cli {
namespace {

std::string MustRead(const std::string& path) {
    auto text = ReadKernelFile(path);
    if (!text) {
        throw Failure(CannotRead(path));
    }
    return std::move(*text);
}

/** Mounts of the other mount namespaces, as far as they may be seen. */
void AddOtherNamespaces(const std::vector<pid_t>& pids, MountTable& mounts, Holders& holders) {
    const auto own = IdentityAt(AT_FDCWD, "/proc/self/ns/mnt");
    // What a process sees of its namespace begins at its root.
    std::set<std::pair<ino_t, std::string>> known;
    for (const pid_t pid : pids) {
        const std::string folder = fmt::format("/proc/{}", pid);
        const auto space = IdentityAt(AT_FDCWD, (folder + "/ns/mnt").c_str());
        if (!space || (own && space->inode == own->inode)) {
            continue;
        }
        const auto root = LinkText(AT_FDCWD, (folder + "/root").c_str());
        if (!root || known.count({space->inode, "/"}) != 0 ||
            !known.emplace(space->inode, *root).second) {
            continue;
        }
        const std::string path = folder + "/mountinfo";
        if (const auto text = ReadKernelFile(path)) {
            mounts.Add(*text, *root, false);
        } else if (errno == EFBIG || errno == EMFILE || errno == ENFILE) {
            // Of one that has ended nothing is missed, and what mayn't be seen is told of
            // processes.
            holders.lost.push_back(CannotRead(path));
        }
    }
}

/** As many as there are processors, but none for so few processes that it wouldn't pay. */
Workers WorkersFor(size_t processes) {
    constexpr size_t kProcessesEach = 20;
    constexpr size_t kMost = 8;
    const size_t wanted = std::clamp<size_t>(processes / kProcessesEach, 1, kMost);
    return Workers(wanted == 1 ? 1 : std::min(UsableProcessors(), wanted));
}

std::vector<std::unique_ptr<Source>> Sources(const SearchQuestion& question,
                                             std::vector<pid_t> pids) {
    std::vector<std::unique_ptr<Source>> sources;
    sources.push_back(std::make_unique<Visibility>(question.inside));
    const Workers workers = WorkersFor(pids.size());
    sources.push_back(std::make_unique<ProcessSource>(std::move(pids), workers, question.source));
    sources.push_back(std::make_unique<BlockDevices>());
    sources.push_back(std::make_unique<SwapFiles>());
    sources.push_back(std::make_unique<MountsBelow>());
    sources.push_back(std::make_unique<NfsExports>());
    sources.push_back(std::make_unique<NfsClients>());
    sources.push_back(std::make_unique<NfsLocks>());
    return sources;
}

}  // namespace

Holders FindHolders(const SearchQuestion& question) {
    MountTable mounts;
    mounts.Add(MustRead("/proc/self/mountinfo"), "/", true);
    Targets targets(question.paths, mounts);
    auto pids = ListProcesses();
    if (!pids) {
        throw Failure(CannotRead("/proc"));
    }
    pids->erase(std::remove_if(pids->begin(), pids->end(),
                               [&](pid_t pid) { return question.own.count(pid) != 0; }),
                pids->end());
    Holders holders;
    AddOtherNamespaces(*pids, mounts, holders);
    targets.Prepare();
    for (const auto& source : Sources(question, std::move(*pids))) {
        source->Find(targets, question.wanted, holders);
        if (question.wanted == Wanted::kWhether && !holders.rows.empty()) {
            return holders;
        }
    }
    if (question.wanted >= Wanted::kFirstName) {
        NameProcesses(holders);
    }
    return holders;
}

}  // namespace cli
