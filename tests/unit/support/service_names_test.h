// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_SERVICE_NAMES_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_SERVICE_NAMES_TEST_H

#include <string>
#include <vector>

#include "tests/unit/support/service_test.h"

namespace unit {

/** Processes with control groups, on a host whose default name is "Internal". */
class ServiceNamesTest : public ServiceTest {
protected:
    void SetUp() override { platform.bundles["service"]["internal_service"] = "Internal"; }

    void Put(const std::string& pid, const std::string& path) {
        libc.controlGroups[pid] = "12:cpu:/\n1:name=systemd:" + path + "\n0::" + path + "\n";
    }
    /** One record each of the pids. */
    std::vector<std::string> Run(const std::vector<std::string>& pids, int result = 0) {
        files.clear();
        for (const std::string& pid : pids) {
            files.emplace_back();
            files.back().setPid(pid);
            files.back().setFullPath("/volume1/" + pid);
        }
        EXPECT_EQ(VORN::FileHandle::GetServiceName(files), result);
        return Names();
    }
    std::vector<std::string> Names() {
        return Column(files, &VORN::FileHandle::OpenedFile::getService);
    }
    ::testing::AssertionResult GoneLogged(const char* pid) {
        return Logged(LOG_ERR, "%s:%d Failed to open pid %s cgroup", kServiceSource, 141, pid);
    }

    Files files;
};

}  // namespace unit

#endif
