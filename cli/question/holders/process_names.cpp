// SPDX-License-Identifier: MIT
#include "cli/question/holders/process_names.h"

#include <fmt/format.h>
#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/host/facts/user_names.h"
#include "cli/question/holders/process_source.h"
#include "cli/question/service_names.h"
#include "support/process_text.h"
#include "vorn/platform/error.h"

namespace cli {
namespace {

/** Effective user of a process. */
std::optional<uid_t> OwnerOf(pid_t pid) {
    const auto status = ReadKernelFile(fmt::format("/proc/{}/status", pid));
    const auto users = status ? support::ParseProcessUsers(*status) : std::nullopt;
    return users ? std::optional(users->effective) : std::nullopt;
}

/** One record a process, for the library's steps that go by the process alone. */
std::map<pid_t, OpenedFile> AskLibrary(const std::vector<Holder>& rows,
                                       std::vector<std::string>& notes) {
    std::map<pid_t, OpenedFile> known;
    for (const Holder& row : rows) {
        if (row.pid != 0) {
            known[row.pid].setPid(std::to_string(row.pid));
        }
    }
    LibraryFiles records;
    for (const auto& [pid, record] : known) {
        records.push_back(record);
    }
    // Services first: some connections go by them.
    if (!records.empty() &&
        (NameServices(records) < 0 || VORN::FileHandle::UpdateConnectionInfo(records) < 0)) {
        notes.push_back(
            fmt::format("can't tell services and clients (error 0x{:04X}); the system "
                        "log says why",
                        KLIBCErrGet()));
    }
    auto record = records.begin();
    for (auto& [pid, entry] : known) {
        entry = std::move(*record++);
    }
    return known;
}

}  // namespace

void NameProcesses(Holders& holders) {
    std::map<pid_t, OpenedFile> library = AskLibrary(holders.rows, holders.notes);
    UserNames users;
    pid_t last = 0;
    std::string command;
    std::string owner;
    for (Holder& row : holders.rows) {
        if (row.pid == 0) {
            continue;
        }
        if (row.pid != last) {
            command = CommandName(row.pid);
            const auto user = OwnerOf(row.pid);
            owner = user ? users.Of(*user) : std::string();
            last = row.pid;
        }
        row.command = command;
        row.owner = owner;
        OpenedFile& record = library[row.pid];
        row.service = record.getService();
        row.user = record.getUser();
        row.host = record.getHost();
    }
}

}  // namespace cli
