// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "cli/question/disconnect/connection_processes.h"

namespace cli {
namespace {

using FilesByProcess = std::map<pid_t, std::vector<FileOfProcess>>;

FilesByProcess ByProcess(const std::vector<FileOfProcess>& files) {
    FilesByProcess byProcess;
    for (const FileOfProcess& file : files) {
        byProcess[file.pid].push_back(file);
    }
    return byProcess;
}

bool Contains(const std::vector<pid_t>& pids, pid_t pid) {
    return std::find(pids.begin(), pids.end(), pid) != pids.end();
}

/** A name of a unit as one word of a shell. */
std::string Quoted(const std::string& unit) {
    constexpr const char* kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789@:._-";
    return unit.find_first_not_of(kPlain) == std::string::npos ? unit : "'" + unit + "'";
}

/** A user's manager and a login are units of their own: to stop one ends more than the process. */
std::string RemedyOf(pid_t pid, const std::string& unit) {
    const bool stoppable = !unit.empty() && unit.rfind("user@", 0) != 0 &&
                           unit.rfind("session-", 0) != 0 && unit != "init.scope" &&
                           unit.find('\'') == std::string::npos;
    return stoppable ? "systemctl stop " + Quoted(unit) : fmt::format("kill {}", pid);
}

class Planner {
public:
    Planner(const HostFacts& facts, const std::vector<FileOfProcess>& selected,
            const std::vector<FileOfProcess>& held)
        : facts_(facts),
          connections_(facts),
          selected_(ByProcess(selected)),
          held_(ByProcess(held)) {}

    Plan Make() {
        for (const auto& [pid, files] : selected_) {
            const auto head = connections_.HeadOf(pid);
            const auto obstacle = head ? ObstacleOf(pid, *head) : WithoutClient(pid);
            if (obstacle) {
                LeaveAlone(pid, *obstacle);
            } else {
                AddTo(*head, pid, files);
            }
        }
        for (auto& [head, connection] : planned_) {
            AddOthers(connection);
            plan_.connections.push_back(std::move(connection));
        }
        return std::move(plan_);
    }

private:
    /** What keeps a connection from being ended; nothing where nothing does. */
    std::optional<Obstacle> ObstacleOf(pid_t pid, pid_t head) {
        const ServerProcess& server = *facts_.Process(head);
        if (facts_.services.count(server.slice) == 0) {
            return Obstacle::kOtherService;
        }
        if (server.init) {
            return Obstacle::kInit;
        }
        if (!server.sockets.known) {
            return Obstacle::kUnknown;
        }
        if (connections_.IsDaemon(head) || ServesMany(pid, server)) {
            return Obstacle::kDaemon;
        }
        const std::vector<pid_t> processes = connections_.Of(head);
        if (std::any_of(processes.begin(), processes.end(),
                        [&](pid_t each) { return facts_.own.count(each) != 0; })) {
            return Obstacle::kOwn;
        }
        return Contains(processes, pid) ? std::nullopt : std::optional(Apart(pid));
    }

    /** Clients of several hosts in one process: but for Samba, whose unit is the machine. */
    bool ServesMany(pid_t pid, const ServerProcess& server) const {
        const Client* client = facts_.ClientOf(pid);
        return client != nullptr && client->host == "unknown" && server.program != "smbd";
    }

    Obstacle Apart(pid_t pid) {
        const ServerProcess* process = facts_.Process(pid);
        return process != nullptr && process->init ? Obstacle::kInit
               : connections_.IsDaemon(pid)        ? Obstacle::kDaemon
                                                   : Obstacle::kApart;
    }

    Obstacle WithoutClient(pid_t pid) {
        const ServerProcess* process = facts_.Process(pid);
        return process != nullptr && process->init ? Obstacle::kInit
               : connections_.IsDaemon(pid)        ? Obstacle::kDaemon
                                                   : Obstacle::kNoClient;
    }

    void LeaveAlone(pid_t pid, Obstacle obstacle) {
        const ServerProcess* process = facts_.Process(pid);
        if (process == nullptr) {
            return;  // It has gone meanwhile, and holds nothing any more.
        }
        plan_.leftAlone.push_back(
            {pid, process->program, obstacle, RemedyOf(pid, process->unit), selected_[pid]});
    }

    void AddTo(pid_t head, pid_t pid, const std::vector<FileOfProcess>& files) {
        PlannedConnection& connection = planned_[head];
        if (connection.processes.empty()) {
            const ServerProcess& server = *facts_.Process(head);
            connection.service = facts_.services.at(server.slice);
            // The half of a server that holds no files may be told of no client, or be no user's.
            for (const Client* client : {facts_.ClientOf(head), facts_.ClientOf(pid)}) {
                connection.client = client == nullptr ? connection.client : *client;
            }
            connection.processes = connections_.Of(head);
            if (!connection.client.ssh) {
                connection.sockets = connections_.SocketsOnlyOf(connection.processes);
            }
            connection.start = server.start;
        }
        connection.selected.insert(connection.selected.end(), files.begin(), files.end());
    }

    void AddOthers(PlannedConnection& connection) {
        for (const pid_t pid : connection.processes) {
            for (const FileOfProcess& file : held_[pid]) {
                const std::vector<FileOfProcess>& selected = selected_[pid];
                if (std::none_of(selected.begin(), selected.end(), [&](const FileOfProcess& it) {
                        return it.fullPath == file.fullPath;
                    })) {
                    connection.others.push_back(file);
                }
            }
        }
    }

    const HostFacts& facts_;
    const ConnectionProcesses connections_;
    FilesByProcess selected_;
    FilesByProcess held_;
    std::map<pid_t, PlannedConnection> planned_;
    Plan plan_;
};

}  // namespace

Plan MakePlan(const HostFacts& facts, const std::vector<FileOfProcess>& selected,
              const std::vector<FileOfProcess>& held) {
    return Planner(facts, selected, held).Make();
}

bool IsSame(const PlannedConnection& a, const PlannedConnection& b) {
    return a.processes.front() == b.processes.front() && a.start == b.start &&
           a.client.host == b.client.host && a.client.user == b.client.user;
}

}  // namespace cli
