// SPDX-License-Identifier: MIT
#include "slices/unified_groups.h"

#include "groups/service_units.h"
#include "support/folder.h"
#include "support/numbers.h"
#include "support/read_file.h"
#include "support/text.h"

namespace slices {
namespace {

constexpr std::string_view kUsers = "user.slice";

/** "user.slice", "user.slice/user-1000.slice": what a session's scope lies in. */
bool LeadsToSessions(std::string_view group) {
    if (support::TakeUntil(group, '/') != kUsers) {
        return false;
    }
    const std::string_view user = support::TakeUntil(group, '/');
    return group.empty() && (user.empty() || support::EndsWith(user, ".slice"));
}

}  // namespace

std::vector<pid_t> ParseMembers(std::string_view text) {
    std::vector<pid_t> members;
    while (!text.empty()) {
        const auto pid = support::ParseNumber<pid_t>(support::TakeLine(text));
        if (pid && *pid > 0) {
            members.push_back(*pid);
        }
    }
    return members;
}

std::vector<pid_t> MembersOf(const std::string& folder) {
    constexpr std::size_t kLimit = std::size_t{64} << 20;  // more than a kernel has processes
    return ParseMembers(support::ReadFile((folder + "/cgroup.procs").c_str(), kLimit));
}

bool IsOfInterest(std::string_view group, const Names& named) {
    std::string_view rest = group;
    return named.count(support::TakeUntil(rest, '/')) != 0 || LeadsToSessions(group) ||
           !groups::SessionOf(group).empty();
}

std::string UnifiedGroups::FolderOf(std::string_view group) const {
    return group.empty() ? root_ : root_ + '/' + std::string(group);
}

void UnifiedGroups::Visit(const std::string& group, const Names& named,
                          const std::function<void(const std::string& group)>& visit) const {
    std::vector<std::string> waiting = {group};
    while (!waiting.empty()) {
        const std::string current = std::move(waiting.back());
        waiting.pop_back();
        const support::Descriptor folder = support::OpenFolder(FolderOf(current).c_str());
        if (!folder) {
            continue;
        }
        visit(current);
        support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
            std::string below = current.empty() ? entry.d_name : current + '/' + entry.d_name;
            if (support::IsFolder(folder.Get(), entry) && IsOfInterest(below, named)) {
                waiting.push_back(std::move(below));
            }
            return true;
        });
    }
}

}  // namespace slices
