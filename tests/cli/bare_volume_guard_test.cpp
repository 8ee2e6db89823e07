// SPDX-License-Identifier: MIT
#include "cli/host/bare_volume_guard.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

TEST(BareVolumeGuard, KeepsTheBareVolumeBackFromReadersOfDescriptorsAlone) {
    struct Case {
        const char* link;
        const char* target;
        bool keepsBack;
    };
    const Case kCases[] = {
        {"/proc/7/fd/3", "/volume", true},    {"/proc/7/fd/3", "/volume1", false},
        {"/proc/7/fd/3", "/volume/", false},  {"/proc/7/fd/3", "/volum", false},
        {"/proc/7/fd/3", "", false},          {"/proc/self/fd/3", "/volume", false},
        {"/proc/7/fd/3/x", "/volume", false}, {"/proc/7/fd/", "/volume", false},
        {"/proc/7/exe", "/volume", false},    {"/proc/7/map_files/3", "/volume", false},
        {"/proc//fd/3", "/volume", false},    {"/proc/-7/fd/3", "/volume", false},
        {"/x/proc/7/fd/3", "/volume", false}, {"proc/7/fd/3", "/volume", false},
        {"/tmp/link", "/volume", false},      {"", "/volume", false},
        {"/proc/7/fd/-3", "/volume", false},
    };
    for (const Case& each : kCases) {
        cli::BareVolumeGuard guard;
        EXPECT_EQ(guard.KeepsBack(each.link, each.target), each.keepsBack)
            << each.link << " -> " << each.target;
        EXPECT_EQ(guard.Notice(), each.keepsBack
                                      ? "left out an object named \"/volume\", which is in "
                                        "no volume; held open by: 7"
                                      : "")
            << each.link << " -> " << each.target;
    }
}

TEST(BareVolumeGuard, NamesTheFirstTenProcessesOnceEach) {
    cli::BareVolumeGuard guard;
    guard.KeepsBack("/proc/20/fd/3", "/volume");
    guard.KeepsBack("/proc/3/fd/3", "/volume");
    guard.KeepsBack("/proc/20/fd/4", "/volume");
    EXPECT_EQ(guard.Notice(),
              "left out an object named \"/volume\", which is in no volume; held open by: 3, 20");
    for (int pid = 100; pid < 200; ++pid) {
        guard.KeepsBack("/proc/" + std::to_string(pid) + "/fd/3", "/volume");
    }
    EXPECT_EQ(guard.Notice(),
              "left out an object named \"/volume\", which is in no volume; held open by: 3, 20, "
              "100, 101, 102, 103, 104, 105, 106, 107 and 92 more");
}

TEST(BareVolumeGuard, LeavesEveryOtherLinkAsItIs) {
    const std::string link = testing::TempDir() + "/vorn-link-" + std::to_string(getpid());
    std::filesystem::create_symlink("/volume", link);
    const cli::BareVolumeGuard guard;
    EXPECT_EQ(std::filesystem::read_symlink(link), "/volume");
    std::filesystem::remove(link);
    char target[64];
    EXPECT_EQ(readlink("/proc/self/cwd", target, sizeof(target)),
              static_cast<ssize_t>(std::filesystem::current_path().string().size()));
    EXPECT_EQ(readlink("/nowhere", target, sizeof(target)), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(guard.Notice(), "");
}

}  // namespace
