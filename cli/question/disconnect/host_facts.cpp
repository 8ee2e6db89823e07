// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/host_facts.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

#include "cli/failure.h"
#include "cli/host/facts/facts_text.h"
#include "cli/host/kickable_services.h"
#include "cli/question/disconnect/tcp_sockets.h"
#include "cli/question/holders/identity.h"
#include "groups/service_units.h"
#include "support/control_groups.h"
#include "support/folder.h"
#include "support/owner.h"
#include "support/process_text.h"
#include "support/read_file.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"

namespace cli {
namespace {

std::string ReadOf(pid_t pid, const char* name) {
    return support::ReadFile(fmt::format("/proc/{}/{}", pid, name).c_str());
}

/** Below the root, in the hierarchy that the library goes by where there is one. */
std::string_view GroupOf(std::string_view cgroup) {
    const auto named = support::GroupPath(cgroup, VORN_UNIT_HIERARCHY);
    std::string_view path = named ? *named : support::GroupPath(cgroup, "").value_or("");
    support::ConsumePrefix(path, "/");
    return path;
}

std::string ProgramOf(pid_t pid) {
    const auto target = LinkText(AT_FDCWD, fmt::format("/proc/{}/exe", pid).c_str());
    std::string_view program = target ? std::string_view(*target) : std::string_view();
    // A daemon whose file was replaced meanwhile is the same service.
    support::ConsumeSuffix(program, " (deleted)");
    return std::string(program.substr(program.rfind('/') + 1));
}

/** Nothing of a process that has gone. */
std::optional<ServerProcess> ReadProcess(pid_t pid, groups::ServiceUnits& units) {
    const auto stat = support::ParseProcessStat(ReadOf(pid, "stat"));
    if (!stat) {
        return std::nullopt;
    }
    const std::string cgroup = ReadOf(pid, "cgroup");
    const std::string_view group = GroupOf(cgroup);
    ServerProcess facts;
    facts.parent = stat->parent;
    facts.start = stat->startTime;
    facts.init = pid == 1 || IsInit(ReadOf(pid, "status"));
    facts.program = ProgramOf(pid);
    facts.slice = units.OfPath(group);
    facts.unit = UnitOf(cgroup);
    facts.session = support::ParseAuditId(ReadOf(pid, "sessionid"));
    return facts;
}

std::map<pid_t, ServerProcess> ReadProcesses() {
    const support::Descriptor folder = support::OpenFolder("/proc");
    groups::ServiceUnits units;
    std::map<pid_t, ServerProcess> processes;
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        const auto pid = support::ParseNumber<pid_t>(entry.d_name);
        if (auto facts = pid ? ReadProcess(*pid, units) : std::nullopt) {
            processes.emplace(*pid, std::move(*facts));
        }
        return true;
    });
    if (error != 0) {
        throw Failure("can't read /proc");
    }
    return processes;
}

std::map<pid_t, Client> ReadClients() {
    VORN_CURCONN* block = nullptr;
    const int count = VORNCurConnGet(&block);
    const support::Owner<VORN_CURCONN, free> owner(block);
    if (count < 0) {
        throw Failure(fmt::format("can't tell the clients (error 0x{:04X})", KLIBCErrGet()));
    }
    std::map<pid_t, Client> clients;
    for (int i = 0; i < count; ++i) {
        const VORN_CURCONN& record = block[i];
        // Of several records of a process the last one counts.
        clients[static_cast<pid_t>(record.pid)] = {record.szHost, record.szUser,
                                                   record.type == VORN_CURCONN_SSH};
    }
    return clients;
}

/** This process and those above it, up to the first of the host. */
std::set<pid_t> OwnProcesses(const HostFacts& facts) {
    std::set<pid_t> own;
    for (pid_t pid = getpid(); pid > 1 && own.insert(pid).second;) {
        pid = facts.ParentOf(pid);
    }
    return own;
}

/** Processes that serve clients, those above them, which may wait for more, and those below. */
std::set<pid_t> ConcernedProcesses(const HostFacts& facts) {
    std::set<pid_t> concerned;
    for (const auto& [client, unused] : facts.clients) {
        for (pid_t pid = client; pid > 1 && concerned.insert(pid).second;) {
            pid = facts.ParentOf(pid);
        }
    }
    for (const auto& [process, unused] : facts.processes) {
        std::set<pid_t> path;
        pid_t pid = process;
        while (pid > 1 && facts.ClientOf(pid) == nullptr && path.insert(pid).second) {
            pid = facts.ParentOf(pid);
        }
        if (facts.ClientOf(pid) != nullptr) {
            concerned.insert(path.begin(), path.end());
        }
    }
    return concerned;
}

}  // namespace

// NSpid:	4711	1
bool IsInit(std::string_view status) {
    const std::string_view ids = support::StatusValue(status, "NSpid:");
    return ids.empty() || ids.substr(ids.find_last_of(" \t") + 1) == "1";
}

HostFacts ReadHostFacts() {
    HostFacts facts;
    facts.services = KickableUnits();
    facts.clients = ReadClients();
    facts.processes = ReadProcesses();
    facts.own = OwnProcesses(facts);
    for (const pid_t pid : ConcernedProcesses(facts)) {
        const auto process = facts.processes.find(pid);
        if (process != facts.processes.end()) {
            process->second.sockets = ReadTcpSockets(pid);
        }
    }
    return facts;
}

}  // namespace cli
