// SPDX-License-Identifier: MIT
#include "platform/linux/findings/process_sight.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

#include "platform/linux/support/host_error.h"
#include "support/folder.h"
#include "support/numbers.h"

namespace vornplatform {
namespace {

constexpr char kSubject[] = "processes";

/** What the kernel calls its first namespaces; the numbers are part of its interface. */
constexpr char kFirstPidSpace[] = "pid:[4026531836]";
constexpr char kFirstUserSpace[] = "user:[4026531837]";

/** Empty, with errno, for a link that can't be read. */
std::string ReadLink(int folder, const std::string& link) {
    char target[64];
    const ssize_t size = readlinkat(folder, link.c_str(), target, sizeof(target));
    return std::string(target, size > 0 ? static_cast<size_t>(size) : 0);
}

/**
 * The mount namespace of a process; empty for one that has none left, and nothing where its
 * descriptors are withheld. Both are asked for, as a list needs both: the rights to the folder are
 * those of any folder, the rights to what its links tell are those of a debugger.
 */
std::optional<std::string> Examine(int proc, const std::string& pid) {
    if (faccessat(proc, (pid + "/fd").c_str(), R_OK | X_OK, AT_EACCESS) != 0 && IsWithheld(errno)) {
        return std::nullopt;
    }
    std::string space = ReadLink(proc, pid + "/ns/mnt");
    if (space.empty() && IsWithheld(errno)) {
        return std::nullopt;
    }
    return space;
}

/** That of the processes that /proc shows, which need not be the caller's. */
bool ShowsPrivatePidSpace(int proc) {
    const std::string first = ReadLink(proc, "1/ns/pid");
    const std::string space = first.empty() ? ReadLink(proc, "self/ns/pid") : first;
    return !space.empty() && space != kFirstPidSpace;
}

void LookAtEach(int proc, ProcessSight& sight) {
    const std::string own = ReadLink(proc, "self/ns/mnt");
    const int error = support::VisitFolder(proc, [&](const dirent64& entry) {
        const auto pid = support::ParseNumber<pid_t>(entry.d_name);
        if (!pid || *pid <= 0) {
            return true;
        }
        const auto space = Examine(proc, entry.d_name);
        if (!space) {
            sight.unseen.push_back(*pid);
        } else if (!space->empty() && *space != own) {
            sight.mountSpaces.emplace(*space, *pid);
        }
        return true;
    });
    if (error != 0) {
        throw HostError(error);
    }
}

Finding Unseen(const ProcessSight& sight) {
    constexpr size_t kShown = 5;
    std::vector<std::string> pids;
    std::transform(sight.unseen.begin(), sight.unseen.end(), std::back_inserter(pids),
                   [](pid_t pid) { return std::to_string(pid); });
    const std::string which = std::to_string(pids.size()) +
                              (pids.size() == 1 ? " process" : " processes") +
                              " can't be examined (" + FirstFew(pids, kShown) + ")";
    if (!sight.isRoot) {
        return {kSubject, VORN_FINDING_MISSING,
                "not running as root: only files of this user's own processes are seen; " + which,
                "run as root, or give CAP_SYS_PTRACE and CAP_DAC_READ_SEARCH", true};
    }
    if (sight.isUserSpace) {
        return {kSubject, VORN_FINDING_MISSING,
                "root of a user namespace is not root over the processes outside it: " + which,
                "run in the host's own user namespace", true};
    }
    return {kSubject, VORN_FINDING_MISSING,
            which +
                ": root lacks CAP_SYS_PTRACE or CAP_DAC_READ_SEARCH here, or has less rights "
                "than they have",
            "run as root with all capabilities, outside of containers", true};
}

}  // namespace

ProcessSight LookAtProcesses() {
    const support::Descriptor proc = support::OpenFolder("/proc");
    if (!proc) {
        throw HostError(errno);
    }
    ProcessSight sight;
    sight.isRoot = geteuid() == 0;
    const std::string users = ReadLink(proc.Get(), "self/ns/user");
    sight.isUserSpace = !users.empty() && users != kFirstUserSpace;
    sight.isPrivate = ShowsPrivatePidSpace(proc.Get());
    sight.hidesOthers = faccessat(proc.Get(), "1", F_OK, 0) != 0 && IsNothingThere(errno);
    LookAtEach(proc.Get(), sight);
    return sight;
}

Findings JudgeSight(const ProcessSight& sight, bool ownVolumes) {
    Findings findings;
    if (!sight.unseen.empty()) {
        findings.push_back(Unseen(sight));
    }
    if (sight.hidesOthers) {
        findings.push_back({kSubject, VORN_FINDING_MISSING,
                            "processes of others are hidden: /proc is mounted with hidepid",
                            "run as root, or as a member of the group that /proc is mounted for",
                            true});
    }
    if (sight.isPrivate && !ownVolumes) {
        findings.push_back(
            {kSubject, VORN_FINDING_MISSING,
             "this is a PID namespace of its own: processes outside it are not seen",
             std::string("run on the host itself; where nobody outside uses these volumes, say so "
                         "by the file ") +
                 kPrivateVolumesPath,
             true});
    }
    return findings;
}

}  // namespace vornplatform
