#include "platform/linux/processes/process_reader.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "platform/linux/processes/proc_file.h"
#include "platform/linux/support/folder.h"

namespace vornplatform {
namespace {

std::string PathOf(pid_t pid, const char* file) {
    return "/proc/" + std::to_string(pid) + '/' + file;
}

std::string ReadText(pid_t pid, const char* file) {
    return ReadProcHead(PathOf(pid, file));
}

bool ParsePid(const char* name, pid_t& pid) {
    const char* end = name + std::strlen(name);
    const auto result = std::from_chars(name, end, pid);
    return result.ec == std::errc() && result.ptr == end && pid > 0;
}

}  // namespace

std::vector<pid_t> ListProcesses() {
    std::vector<pid_t> processes;
    const Folder folder = OpenFolder("/proc");
    while (const dirent* entry = folder ? NextEntry(folder) : nullptr) {
        pid_t pid = 0;
        if (ParsePid(entry->d_name, pid)) {
            processes.push_back(pid);
        }
    }
    std::sort(processes.begin(), processes.end());
    return processes;
}

std::optional<ProcessStat> ReadProcessStat(pid_t pid) {
    const std::string text = ReadText(pid, "stat");
    if (text.empty()) {
        return std::nullopt;
    }
    const auto stat = ParseProcessStat(text);
    if (!stat) {
        errno = EPROTO;
    }
    return stat;
}

std::optional<ProcessUsers> ReadProcessUsers(pid_t pid) {
    return ParseProcessUsers(ReadText(pid, "status"));
}

std::optional<std::uint32_t> ReadLoginUid(pid_t pid) {
    return ParseAuditId(ReadText(pid, "loginuid"));
}

std::optional<std::uint32_t> ReadSessionId(pid_t pid) {
    return ParseAuditId(ReadText(pid, "sessionid"));
}

bool HasChildren(pid_t pid) {
    const std::string file = "task/" + std::to_string(pid) + "/children";
    return !ReadText(pid, file.c_str()).empty();
}

}  // namespace vornplatform
