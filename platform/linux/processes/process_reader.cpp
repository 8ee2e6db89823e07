// SPDX-License-Identifier: MIT
#include "platform/linux/processes/process_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

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

std::string ProgramOf(pid_t pid) {
    return "/proc/" + std::to_string(pid) + "/exe";
}

/** A link is not to be had also of a program in a folder deeper than the kernel tells. */
void ThrowUnlessNotToBeHad(int error) {
    if (!IsNothingThere(error) && !IsWithheld(error) && error != ENAMETOOLONG) {
        throw HostError(error);
    }
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

std::vector<pid_t> ReadChildren(pid_t pid) {
    const std::string file = "task/" + std::to_string(pid) + "/children";
    const auto text = ReadText(pid, file.c_str());
    return text ? ParseChildren(*text) : std::vector<pid_t>();
}

std::optional<std::string> ReadProgram(pid_t pid) {
    char link[PATH_MAX];
    const ssize_t size = readlink(ProgramOf(pid).c_str(), link, sizeof(link));
    if (size < 0) {
        ThrowUnlessNotToBeHad(errno);
        return std::nullopt;
    }
    return std::string(ExecutableName({link, static_cast<std::size_t>(size)}));
}

std::optional<bool> RunsSetUserId(pid_t pid) {
    struct statx program {};
    // What the kernel remembers: the volume of the program may never answer.
    if (statx(AT_FDCWD, ProgramOf(pid).c_str(), AT_STATX_DONT_SYNC, STATX_MODE, &program) != 0) {
        ThrowUnlessNotToBeHad(errno);
        return std::nullopt;
    }
    return (program.stx_mode & S_ISUID) != 0;
}

}  // namespace vornplatform
