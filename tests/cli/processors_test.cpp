// SPDX-License-Identifier: MIT
#include "cli/host/processors.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>

namespace {

using Groups = std::vector<cli::CpuGroup>;

TEST(Processors, AreLimitedByCpuMax) {
    EXPECT_EQ(cli::ParseCpuMax("150000 100000\n"), 1.5);
    EXPECT_EQ(cli::ParseCpuMax("20000 100000"), 0.2);
    for (const char* unlimited : {"max 100000\n", "", "\n", "100000\n", "0 100000\n", "-1 100000\n",
                                  "100000 0\n", "x y\n"}) {
        EXPECT_EQ(cli::ParseCpuMax(unlimited), std::nullopt) << unlimited;
    }
}

TEST(Processors, AreLimitedByCpuQuota) {
    EXPECT_EQ(cli::ParseCpuQuota("250000\n", "100000\n"), 2.5);
    EXPECT_EQ(cli::ParseCpuQuota("-1\n", "100000\n"), std::nullopt);
    EXPECT_EQ(cli::ParseCpuQuota("", ""), std::nullopt);
    EXPECT_EQ(cli::ParseCpuQuota("100000\n", "0\n"), std::nullopt);
}

constexpr const char* kUnified =
    "30 22 0:26 / /sys/fs/cgroup rw,nosuid shared:9 - cgroup2 cgroup2 rw,nsdelegate\n";
constexpr const char* kBoth =
    "31 23 0:28 / /sys/fs/cgroup rw,relatime - tmpfs tmpfs rw,mode=755\n"
    "33 31 0:30 / /sys/fs/cgroup/cpuset rw - cgroup cgroup rw,cpuset\n"
    "32 31 0:29 / /sys/fs/cgroup/cpu,cpuacct rw - cgroup cgroup rw,cpu,cpuacct\n"
    "41 31 0:38 / /sys/fs/cgroup/unified rw - cgroup2 cgroup2 rw\n";
constexpr const char* kContainer =
    "32 31 0:29 /docker/ab /sys/fs/cgroup/cpu ro master:3 - cgroup cgroup rw,cpu\n";

TEST(Processors, AreLimitedByTheOwnGroupAndThoseAbove) {
    EXPECT_EQ(cli::CpuGroups("0::/system.slice/x.service\n", kUnified),
              (Groups{{true,
                       {"/sys/fs/cgroup/system.slice/x.service", "/sys/fs/cgroup/system.slice",
                        "/sys/fs/cgroup"}}}));
    EXPECT_EQ(cli::CpuGroups("0::/\n", kUnified), (Groups{{true, {"/sys/fs/cgroup"}}}));
    EXPECT_EQ(cli::CpuGroups("5:cpuset:/no\n3:cpu,cpuacct:/a\n1:name=systemd:/b\n0::/c\n", kBoth),
              (Groups{{true, {"/sys/fs/cgroup/unified/c", "/sys/fs/cgroup/unified"}},
                      {false, {"/sys/fs/cgroup/cpu,cpuacct/a", "/sys/fs/cgroup/cpu,cpuacct"}}}));
}

TEST(Processors, AreLimitedByWhatAContainerSees) {
    EXPECT_EQ(cli::CpuGroups("4:cpu:/docker/ab/in\n", kContainer),
              (Groups{{false, {"/sys/fs/cgroup/cpu/in", "/sys/fs/cgroup/cpu"}}}));
    EXPECT_EQ(cli::CpuGroups("4:cpu:/docker/ab\n", kContainer),
              (Groups{{false, {"/sys/fs/cgroup/cpu"}}}));
    EXPECT_EQ(cli::CpuGroups("4:cpu:/elsewhere\n", kContainer),
              (Groups{{false, {"/sys/fs/cgroup/cpu"}}}));
}

TEST(Processors, AreNotLimitedWhereNoGroupIsMounted) {
    EXPECT_EQ(cli::CpuGroups("4:cpu:/a\n0::/b\n", ""), Groups());
    EXPECT_EQ(cli::CpuGroups("", kBoth), Groups());
}

TEST(Processors, AreNoMoreThanTheProcessIsBoundTo) {
    cpu_set_t before;
    ASSERT_EQ(sched_getaffinity(0, sizeof(before), &before), 0);
    int first = 0;
    while (!CPU_ISSET(first, &before)) {
        ++first;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
    EXPECT_EQ(cli::UsableProcessors(), 1U);
    ASSERT_EQ(sched_setaffinity(0, sizeof(before), &before), 0);
    EXPECT_GE(cli::UsableProcessors(), 1U);
    EXPECT_LE(cli::UsableProcessors(), static_cast<size_t>(CPU_COUNT(&before)));
}

}  // namespace
