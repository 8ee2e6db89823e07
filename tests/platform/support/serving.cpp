// SPDX-License-Identifier: MIT
#include "tests/platform/support/serving.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <ostream>

#include "vorn/platform/connection.h"

std::ostream& operator<<(std::ostream& out, const Seen& seen) {
    return out << seen.user << " at " << seen.host << ", type " << seen.type;
}

List SeenOf(pid_t pid) {
    VORN_CURCONN* records = nullptr;
    const int count = VORNCurConnGet(&records);
    EXPECT_GE(count, 0);
    const std::unique_ptr<VORN_CURCONN, decltype(&std::free)> owner(records, std::free);
    List seen;
    for (int i = 0; i < count; ++i) {
        if (records[i].pid == static_cast<std::uint32_t>(pid)) {
            seen.push_back({records[i].szHost, records[i].szUser, records[i].type});
        }
    }
    return seen;
}

std::string NameOf(uid_t uid) {
    const passwd* user = getpwuid(uid);
    return user != nullptr ? user->pw_name : std::to_string(uid);
}

std::string MakeServer(const TempFolder& folder, const std::string& name) {
    const std::string path = folder.Path(name);
    std::filesystem::remove(path);
    std::filesystem::copy_file("/usr/bin/sleep", path);
    return path;
}

void BecomeServer(const std::string& program, int socket, int descriptor) {
    if (socket == descriptor) {
        fcntl(socket, F_SETFD, 0);
    } else {
        dup2(socket, descriptor);
    }
    execl(program.c_str(), program.c_str(), "infinity", nullptr);
    _exit(1);
}
