// SPDX-License-Identifier: MIT
#include "cli/host/descriptor_links.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace {

std::string Read(const std::string& link) {
    char target[4096];
    const ssize_t length = cli::DescriptorLinks::Read(link.c_str(), target, sizeof(target));
    return length < 0 ? "error " + std::to_string(errno)
                      : std::string(target, static_cast<size_t>(length));
}

TEST(DescriptorLinks, ReadWhatReadlinkReads) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string own = "/proc/" + std::to_string(getpid()) + "/fd/";
    const std::string links[] = {own + std::to_string(ends[0]),
                                 own + std::to_string(ends[1]),
                                 own + "99999",
                                 own,
                                 "/proc/1/fd/0",
                                 own + std::to_string(ends[1]),
                                 "/proc/999999999/fd/3",
                                 "/proc/self/exe",
                                 "/proc/self/cwd",
                                 "relative",
                                 ""};
    for (const std::string& link : links) {
        char target[4096];
        const ssize_t length = readlinkat(AT_FDCWD, link.c_str(), target, sizeof(target));
        const std::string expected = length < 0 ? "error " + std::to_string(errno)
                                                : std::string(target, static_cast<size_t>(length));
        EXPECT_EQ(Read(link), expected) << link;
    }
    const cli::DescriptorLinks here;
    for (const int end : ends) {
        EXPECT_EQ(Read(own + std::to_string(end)).substr(0, 6), "pipe:[");
    }
    EXPECT_EQ(Read(own + "99999"), "error " + std::to_string(ENOENT));
    EXPECT_EQ(Read("/proc/999999999/fd/3"), "error " + std::to_string(ENOENT));
    EXPECT_EQ(Read(own + std::to_string(ends[0])).substr(0, 6), "pipe:[");
    close(ends[0]);
    EXPECT_EQ(Read(own + std::to_string(ends[0])), "error " + std::to_string(ENOENT));
    EXPECT_EQ(Read("/proc/self/exe"), Read("/proc/" + std::to_string(getpid()) + "/exe"));
    close(ends[1]);
}

}  // namespace
