// SPDX-License-Identifier: MIT
#include "platform/linux/findings/client_findings.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "platform/linux/connections/connection_block.h"
#include "platform/linux/connections/smb_query.h"
#include "platform/linux/findings/answer_findings.h"
#include "platform/linux/processes/process_reader.h"
#include "platform/linux/support/host_error.h"
#include "vorn/platform/error.h"

namespace vornplatform {
namespace {

constexpr char kSsh[] = "SSH sessions";
constexpr char kSmb[] = "SMB sessions";

LoginProcess ReadLoginProcess(pid_t pid) {
    LoginProcess process;
    if (const auto stat = ReadProcessStat(pid)) {
        process.parent = stat->parent;
        process.session = ReadSessionId(pid);
        process.parentSession = ReadSessionId(stat->parent);
    }
    return process;
}

bool IsInstalled(const char* program) {
    return access(program, X_OK) == 0;
}

bool Runs(const char* program) {
    const std::vector<pid_t> processes = ListProcesses();
    return std::any_of(processes.begin(), processes.end(),
                       [program](pid_t pid) { return ReadProgram(pid) == program; });
}

std::optional<LostSource> Lost(Source source) {
    for (const LostSource& loss : LostSources()) {
        if (loss.source == source) {
            return loss;
        }
    }
    return std::nullopt;
}

Finding FindSockets(const ClientFacts& facts) {
    if (facts.error != 0) {
        return {"sockets", VORN_FINDING_MISSING,
                "client connections can't be listed (error " + std::to_string(facts.error) + ")",
                "see the system log for the reason", true};
    }
    if (const auto loss = Lost(Source::kSockets)) {
        return LossFinding(*loss);
    }
    return {"sockets", VORN_FINDING_OK,
            std::to_string(facts.records) + " processes serve clients or run in their logins"};
}

Finding FindSsh(const ClientFacts& facts) {
    if (!IsInstalled("/usr/sbin/sshd") && !IsInstalled("/usr/sbin/dropbear")) {
        return {kSsh, VORN_FINDING_OK, "no SSH server is installed"};
    }
    const size_t logins = CountLogins(facts.ssh, ReadLoginProcess);
    const std::string found = std::to_string(logins) + (logins == 1 ? " login" : " logins");
    if (access("/proc/self/loginuid", F_OK) != 0) {
        return {kSsh, VORN_FINDING_WARNING, found + ", but this kernel keeps no login ids",
                "use a kernel with CONFIG_AUDIT to see users of detached processes"};
    }
    return {kSsh, VORN_FINDING_OK, found};
}

Finding FindSmb() {
    if (!IsInstalled("/usr/sbin/smbd")) {
        return {kSmb, VORN_FINDING_OK, "no SMB server is installed"};
    }
    if (!Runs("smbd")) {
        return {kSmb, VORN_FINDING_OK, "no SMB server runs, so smbstatus was not asked"};
    }
    const auto users = AskSmbStatus(SmbQuestion::kSessions);
    if (const auto loss = Lost(Source::kSmbUsers)) {
        return LossFinding(*loss);
    }
    return {kSmb, VORN_FINDING_OK,
            "smbstatus answers: " + std::to_string(users->size()) +
                (users->size() == 1 ? " connection" : " connections") + " with a user"};
}

}  // namespace

ClientFacts AskForClients() {
    ClientFacts facts;
    VORN_CURCONN* connections = nullptr;
    const int count = VORNCurConnGet(&connections);
    const ConnectionBlock owner(connections);
    if (count < 0) {
        facts.error = KLIBCErrGet();
        if (facts.error == KLIBC_ERR_RESOURCE) {
            throw HostError(ENOMEM);
        }
        return facts;
    }
    facts.records = static_cast<size_t>(count);
    for (const VORN_CURCONN* each = connections; each != connections + count; ++each) {
        if (each->type == VORN_CURCONN_SSH) {
            facts.ssh.insert(static_cast<pid_t>(each->pid));
        }
    }
    return facts;
}

size_t CountLogins(const std::set<pid_t>& processes,
                   const std::function<LoginProcess(pid_t)>& read) {
    std::set<std::string> logins;
    for (const pid_t pid : processes) {
        pid_t first = pid;
        LoginProcess process = read(first);
        while (processes.count(process.parent) != 0 && process.parent != first) {
            first = process.parent;
            process = read(first);
        }
        // A server that was started from a login hands its own session on to all its clients.
        const bool isOwn = process.session && process.session != process.parentSession;
        logins.insert(isOwn ? "session " + std::to_string(*process.session)
                            : "process " + std::to_string(first));
    }
    return logins.size();
}

Findings FindClients(const ClientFacts& facts) {
    return {FindSockets(facts), FindSsh(facts), FindSmb()};
}

}  // namespace vornplatform
