// SPDX-License-Identifier: MIT
#include "cli/question/holders/process_source.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>

#include "cli/question/holders/bound_sockets.h"
#include "cli/question/holders/process_facts.h"
#include "cli/text/escape.h"
#include "support/folder.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

/** "3 processes can't be examined (Permission denied): 1 (systemd), 44 (sh), 45 (cat)" */
std::string Unread(const char* why, const std::vector<pid_t>& pids) {
    constexpr size_t kShown = 10;
    std::vector<std::string> shown;
    for (size_t i = 0; i < std::min(pids.size(), kShown); ++i) {
        shown.push_back(fmt::format("{} ({})", pids[i], Escaped(CommandName(pids[i]), true)));
    }
    return fmt::format("{} process{} can't be examined ({}): {}{}", pids.size(),
                       pids.size() == 1 ? "" : "es", why, fmt::join(shown, ", "),
                       pids.size() > kShown ? ", ..." : "");
}

void TellUnread(const std::vector<std::pair<pid_t, int>>& unread, Holders& holders) {
    std::map<int, std::vector<pid_t>> byError;
    for (const auto& [pid, error] : unread) {
        if (!IsKernelThread(pid)) {
            byError[error].push_back(pid);
        }
    }
    for (auto& [error, pids] : byError) {
        std::sort(pids.begin(), pids.end());
        holders.lost.push_back(Unread(std::strerror(error), pids));
    }
}

}  // namespace

std::optional<std::vector<pid_t>> ListProcesses() {
    const support::Descriptor folder = support::OpenFolder("/proc");
    std::vector<pid_t> pids;
    if (!folder) {
        return std::nullopt;
    }
    errno = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        if (const auto pid = support::ParseNumber<pid_t>(entry.d_name)) {
            pids.push_back(*pid);
        }
        return true;
    });
    return errno == 0 ? std::optional(std::move(pids)) : std::nullopt;
}

std::string CommandName(pid_t pid) {
    std::string name = ReadKernelFile(fmt::format("/proc/{}/comm", pid)).value_or("");
    if (!name.empty() && name.back() == '\n') {
        name.pop_back();
    }
    return name;
}

ProcessSource::Share ProcessSource::ReadShare(const ProcessReading& reading,
                                              std::atomic<size_t>& next) const {
    Share share;
    for (size_t at = next++; at < pids_.size() && !reading.decision.IsMade(); at = next++) {
        const int error = ProcessReader(reading, pids_[at]).Read(share.holders, share.seenSockets);
        if (error != 0) {
            share.unread.emplace_back(pids_[at], error);
        }
        if (!share.holders.rows.empty()) {
            reading.decision.NoteFound();
        }
    }
    return share;
}

std::unordered_set<ino_t> ProcessSource::ReadProcesses(const ProcessReading& reading,
                                                       Holders& holders) const {
    std::atomic<size_t> next = 0;
    std::vector<Share> shares(workers_.Count());
    workers_.ForEach(shares.size(), [&](size_t i) { shares[i] = ReadShare(reading, next); });
    std::vector<std::pair<pid_t, int>> unread;
    Holders found;
    std::unordered_set<ino_t> seen;
    for (Share& share : shares) {
        Append(found, std::move(share.holders));
        unread.insert(unread.end(), share.unread.begin(), share.unread.end());
        seen.merge(share.seenSockets);
    }
    std::stable_sort(found.rows.begin(), found.rows.end(),
                     [](const Holder& a, const Holder& b) { return a.pid < b.pid; });
    Append(holders, std::move(found));
    TellUnread(unread, holders);
    return seen;
}

void ProcessSource::Find(const Targets& targets, Wanted wanted, Holders& holders) {
    const BoundSockets sockets = FindBoundSockets(targets, pids_, holders);
    Decision decision(targets, wanted, pids_);
    const KernelHoldings kernel =
        AskKernel({targets, wanted, !sockets.empty(), source_, open_}, workers_, decision);
    if (auto found = decision.Found()) {
        holders.rows.push_back(std::move(*found));
        return;
    }
    const auto seen = ReadProcesses({targets, wanted, kernel, sockets, decision}, holders);
    if (wanted != Wanted::kWhether || holders.rows.empty()) {
        AddUnseenSockets(sockets, seen, holders);
    }
}

}  // namespace cli
