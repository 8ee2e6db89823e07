#include "platform/linux/processes/process_reader.h"

#include <algorithm>
#include <cerrno>

#include "platform/linux/processes/proc_file.h"
#include "platform/linux/support/host_error.h"
#include "support/folder.h"
#include "support/numbers.h"

namespace vornplatform {
namespace {

std::optional<std::string> ReadText(pid_t pid, const char* file) {
    return ReadProcHead("/proc/" + std::to_string(pid) + '/' + file);
}

/** A fact that a parser finds in a file of a process; nothing without the file or the fact. */
template <typename Fact>
std::optional<Fact> ReadFact(pid_t pid, const char* file,
                             std::optional<Fact> (*parse)(std::string_view text)) {
    const auto text = ReadText(pid, file);
    return text ? parse(*text) : std::nullopt;
}

}  // namespace

std::vector<pid_t> ListProcesses() {
    std::vector<pid_t> processes;
    const support::Descriptor folder = support::OpenFolder("/proc");
    if (!folder && IsNothingThere(errno)) {
        return processes;
    }
    const int error = !folder ? errno : support::VisitFolder(folder.Get(), [&](const auto& entry) {
        const auto pid = support::ParseNumber<pid_t>(entry.d_name);
        if (pid && *pid > 0) {
            processes.push_back(*pid);
        }
        return true;
    });
    if (error != 0) {
        throw HostError(error);
    }
    std::sort(processes.begin(), processes.end());
    return processes;
}

std::optional<ProcessStat> ReadProcessStat(pid_t pid) {
    const auto text = ReadText(pid, "stat");
    if (!text) {
        return std::nullopt;
    }
    const auto stat = ParseProcessStat(*text);
    if (!stat) {
        throw HostError(EPROTO);
    }
    return stat;
}

std::optional<ProcessUsers> ReadProcessUsers(pid_t pid) {
    return ReadFact(pid, "status", &ParseProcessUsers);
}

std::optional<std::uint32_t> ReadLoginUid(pid_t pid) {
    return ReadFact(pid, "loginuid", &ParseAuditId);
}

std::optional<std::uint32_t> ReadSessionId(pid_t pid) {
    return ReadFact(pid, "sessionid", &ParseAuditId);
}

bool HasChildren(pid_t pid) {
    const std::string file = "task/" + std::to_string(pid) + "/children";
    const auto children = ReadText(pid, file.c_str());
    return children && !children->empty();
}

}  // namespace vornplatform
