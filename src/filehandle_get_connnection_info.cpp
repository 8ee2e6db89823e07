// SPDX-License-Identifier: MIT
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <syslog.h>

#include <boost/lexical_cast.hpp>

#include "src/filehandle_internal.h"
#include "support/owner.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/process.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_get_connnection_info";

/** 0 when there is no such process or it has no parent. */
int ParentOf(int pid) {
    KLIBC_PROC* found = nullptr;
    const int result = KLIBCProcGetByPid(pid, &found);
    // Freed also when it came with a failure.
    const support::Owner<KLIBC_PROC, KLIBCProcFree> process(found);
    return result < 0 || !process ? 0 : process->ppid;
}

/** Who serves which client, for one call. */
class Connections {
public:
    /** Takes over the platform's block. */
    Connections(VORN_CURCONN* block, int count) : block_(block), count_(count) {
        for (int i = 0; i < count_; ++i) {
            // Of several records of a process the last one counts.
            index_[std::to_string(block[i].pid)] = &block[i];
        }
    }

    bool BuildSshPids();
    /** The connection that an entry's process serves; null when there is none. */
    const VORN_CURCONN* Find(const OpenedFile& file);

private:
    const VORN_CURCONN* FindByAncestor(const std::string& pidText);
    int Walk(int pid);
    const VORN_CURCONN* Lookup(const std::string& pid) const;

    const support::Owner<VORN_CURCONN, free> block_;
    const int count_;
    std::unordered_map<std::string, const VORN_CURCONN*> index_;
    /** Where a walk that meets this pid ends: itself for a connection, 0 for nothing above. */
    std::unordered_map<int32_t, int32_t> sshPids_;
    std::vector<int32_t> visited_;
};

bool Connections::BuildSshPids() {
    for (int i = 0; i < count_; ++i) {
        const VORN_CURCONN& connection = block_.get()[i];
        if (connection.type != VORN_CURCONN_SSH) {
            continue;
        }
        // By way of the text on purpose: a pid above the signed range fails the stage.
        const std::string text = std::to_string(connection.pid);
        const int pid = StringToPid(text);
        if (pid < 0) {
            syslog(LOG_ERR, "%s:%d Failed to get pid, error:[wrong format:%s]", kSource, 94,
                   text.c_str());
            return false;
        }
        sshPids_[pid] = pid;
    }
    return true;
}

const VORN_CURCONN* Connections::Lookup(const std::string& pid) const {
    const auto found = index_.find(pid);
    return found != index_.end() ? found->second : nullptr;
}

const VORN_CURCONN* Connections::Find(const OpenedFile& file) {
    const std::string& pid = RecordTexts::Column(file, MEMBER_PID);
    if (const VORN_CURCONN* connection = Lookup(pid)) {
        return connection;
    }
    if (strcasecmp(RecordTexts::Column(file, MEMBER_SERVICE).c_str(), "SSH") != 0) {
        return nullptr;
    }
    return FindByAncestor(pid);
}

/** The nearest ancestor, or the process itself, that the map knows; 0 when there is none. */
int Connections::Walk(int pid) {
    visited_.clear();
    for (int current = pid;;) {
        if (sshPids_.count(current) != 0) {
            return current;
        }
        const int parent = ParentOf(current);
        if (parent <= 1) {
            return 0;
        }
        visited_.push_back(current);
        current = parent;
    }
}

const VORN_CURCONN* Connections::FindByAncestor(const std::string& pidText) {
    const int pid = StringToPid(pidText);
    if (pid < 0) {
        syslog(LOG_ERR, "%s:%d Failed to get pid, error:[wrong format:%s]", kSource, 144,
               pidText.c_str());
        return nullptr;
    }
    const int stop = Walk(pid);
    for (const int32_t visited : visited_) {
        sshPids_.emplace(visited, stop);
    }
    if (stop == 0) {
        return nullptr;
    }
    // One step and no further, on purpose: a pid remembered by a walk that itself ended at a
    // remembered pid leads to that pid, which may have no connection.
    const int32_t target = sshPids_[stop];
    const VORN_CURCONN* connection = target != 0 ? Lookup(std::to_string(target)) : nullptr;
    if (connection != nullptr) {
        index_[pidText] = connection;
    }
    return connection;
}

int StoreConnection(OpenedFile& file, const VORN_CURCONN* connection, std::string& host,
                    std::string& user) {
    host = connection != nullptr ? connection->szHost : "-";
    user = connection != nullptr ? connection->szUser : "-";
    if (file.setHost(host) < 0) {
        KLIBCErrSetEx(KLIBC_ERR_INTERNAL, kSource, 205);
        syslog(LOG_ERR, "%s:%d Failed to set host for opened file", kSource, 206);
        return -1;
    }
    if (file.setUser(user) < 0) {
        KLIBCErrSetEx(KLIBC_ERR_INTERNAL, kSource, 210);
        syslog(LOG_ERR, "%s:%d Failed to set user info for opened file", kSource, 211);
        return -1;
    }
    return 0;
}

}  // namespace

int StringToPid(const std::string& text) {
    try {
        return boost::lexical_cast<int>(text);
    } catch (const boost::bad_lexical_cast& error) {
        syslog(LOG_ERR, "%s:%d Failed to transfer string to pid_t, %s", kSource, 77, error.what());
        return -1;
    }
}

int UpdateConnectionInfo(std::list<OpenedFile>& list) {
    VORN_CURCONN* block = nullptr;
    const int count = VORNCurConnGet(&block);
    if (count < 0) {
        syslog(LOG_ERR, "%s:%d Failed to get current connection info", kSource, 178);
        return -1;
    }
    Connections connections(block, count);
    if (!connections.BuildSshPids()) {
        syslog(LOG_ERR, "%s:%d Failed to build unordered map for ssh pid", kSource, 197);
        return -1;
    }
    std::string host;
    std::string user;
    for (OpenedFile& file : list) {
        if (StoreConnection(file, connections.Find(file), host, user) < 0) {
            return -1;
        }
    }
    return 0;
}

}  // namespace FileHandle
}  // namespace VORN
