// SPDX-License-Identifier: MIT
#include "groups/service_hierarchy.h"

#include <gtest/gtest.h>

#include "groups/service_units.h"
#include "support/read_file.h"

namespace {

using groups::HierarchyFacts;
using groups::ServiceHierarchy;

constexpr char kUnified[] = "0::/user.slice/user-0.slice/session-1.scope\n";
constexpr char kFirst[] = "cgroup:[4026531835]";
constexpr char kAllRights[] = "Name:\tsystemd\nCapBnd:\t000001ffffffffff\nSeccomp:\t0\n";

TEST(ServiceHierarchy, IsThereOrHasAReasonNotToBe) {
    const std::pair<HierarchyFacts, ServiceHierarchy> kCases[] = {
        {{"1:name=systemd:/x\n0::/y\n", "quiet", kAllRights, kFirst}, ServiceHierarchy::kThere},
        {{"1:name=systemd:/\n0::/\n", "cgroup_no_v1=named", "", "cgroup:[1]"},
         ServiceHierarchy::kThere},
        {{kUnified, "root=/dev/vda1 quiet\n", kAllRights, kFirst}, ServiceHierarchy::kAbsent},
        {{kUnified, "", "", ""}, ServiceHierarchy::kAbsent},
        {{kUnified, "", "CapBnd:\tnonsense\n", kFirst}, ServiceHierarchy::kAbsent},
        {{kUnified, "quiet cgroup_no_v1=named\n", kAllRights, kFirst}, ServiceHierarchy::kRefused},
        {{kUnified, "cgroup_no_v1=all,named ro", kAllRights, kFirst}, ServiceHierarchy::kRefused},
        {{kUnified, "cgroup_no_v1=all ro", kAllRights, kFirst}, ServiceHierarchy::kAbsent},
        {{kUnified, "xcgroup_no_v1=named", kAllRights, kFirst}, ServiceHierarchy::kAbsent},
        {{kUnified, "", kAllRights, "cgroup:[4026532177]"}, ServiceHierarchy::kConfined},
        {{kUnified, "", "CapBnd:\t00000000a80425fb\n", kFirst}, ServiceHierarchy::kConfined},
    };
    for (const auto& [facts, judgement] : kCases) {
        EXPECT_EQ(groups::JudgeHierarchy(facts), judgement)
            << facts.groups << facts.commandLine << facts.init << facts.namespaceOfGroups;
    }
}

TEST(ServiceHierarchy, IsExplainedUnlessItIsThere) {
    EXPECT_EQ(groups::ReasonOf(ServiceHierarchy::kThere), "");
    for (const auto each :
         {ServiceHierarchy::kRefused, ServiceHierarchy::kConfined, ServiceHierarchy::kAbsent}) {
        EXPECT_NE(groups::ReasonOf(each), "");
    }
}

TEST(ServiceHierarchy, OfThisHostIsFound) {
    EXPECT_EQ(groups::FindHierarchy() == ServiceHierarchy::kThere,
              groups::HasServiceHierarchy(support::ReadFile("/proc/self/cgroup")));
}

TEST(ServiceHierarchy, HasMounts) {
    const std::pair<const char*, std::vector<std::string>> kCases[] = {
        {"56 47 0:36 / /sys/fs/cgroup/systemd rw shared:9 - cgroup cgroup rw,xattr,name=systemd\n"
         "60 47 0:36 / /run/vorn/services rw - cgroup cgroup rw,name=systemd\n",
         {"/sys/fs/cgroup/systemd", "/run/vorn/services"}},
        {"56 47 0:36 / /a rw shared:9 master:1 - cgroup cgroup rw,name=systemd", {"/a"}},
        {"56 47 0:36 / /a rw - cgroup cgroup rw,name=systemd2\n", {}},
        {"56 47 0:36 / /a rw - cgroup cgroup rw,pids\n", {}},
        {"57 47 0:38 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw,name=systemd\n", {}},
        {"57 47 0:38 / /name=systemd rw - tmpfs cgroup rw\n", {}},
        {"nonsense\n\n", {}},
        {"", {}},
    };
    for (const auto& [text, points] : kCases) {
        EXPECT_EQ(groups::HierarchyMounts(text), points) << text;
    }
}

}  // namespace
