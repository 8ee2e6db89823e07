// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_CONNECTION_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_CONNECTION_TEST_H

#include <string>
#include <utility>
#include <vector>

#include "tests/unit/support/library_test.h"

namespace unit {

inline constexpr char kConnectionSource[] = "filehandle_get_connnection_info";

/** A list of entries with pid and service, and the connections of a host. */
class ConnectionTest : public LibraryTest {
protected:
    static constexpr uint32_t kSsh = 10;
    static constexpr uint32_t kSmb = 1;

    void SetEntries(const std::vector<std::pair<std::string, std::string>>& pidsAndServices) {
        files.clear();
        for (const auto& [pid, service] : pidsAndServices) {
            files.emplace_back();
            files.back().setPid(pid);
            files.back().setFullPath("/volume1/" + pid);
            files.back().setServiceName(service);
        }
    }
    /** Gives each entry a host and a user to be kept or replaced. */
    void SetOldTexts() {
        for (VORN::FileHandle::OpenedFile& file : files) {
            file.setHost("old host");
            file.setUser("old user");
        }
    }
    /** One SSH entry of each pid. */
    void SetSshEntries(const std::vector<std::string>& pids) {
        std::vector<std::pair<std::string, std::string>> entries;
        for (const std::string& pid : pids) {
            entries.emplace_back(pid, "SSH");
        }
        SetEntries(entries);
    }
    void SetParents(const std::vector<std::pair<int, int>>& pidsAndParents) {
        for (const auto& [pid, parent] : pidsAndParents) {
            platform.processes[pid].ppid = parent;
        }
    }
    /** "host user" of each entry after the stage. */
    std::vector<std::string> Run(int result = 0) {
        journal.Clear();
        EXPECT_EQ(VORN::FileHandle::UpdateConnectionInfo(files), result);
        EXPECT_EQ(journal.CallsOf("VORNCurConnGet").size(), 1U);
        return HostsAndUsers();
    }
    std::vector<std::string> HostsAndUsers() {
        std::vector<std::string> shown;
        for (VORN::FileHandle::OpenedFile& file : files) {
            shown.push_back(file.getHost() + " " + file.getUser());
        }
        return shown;
    }
    /** The pids whose process was asked for, in order. */
    std::vector<int> Lookups() const {
        std::vector<int> pids;
        for (const std::string& call : journal.CallsOf("KLIBCProcGetByPid")) {
            EXPECT_THAT(call, ::testing::EndsWith(", null)"));
            pids.push_back(std::stoi(call.substr(call.find('(') + 1)));
        }
        return pids;
    }
    size_t BlocksFreed() const { return journal.CallsOf("free").size(); }

    Files files;
};

}  // namespace unit

#endif
