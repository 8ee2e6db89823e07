// SPDX-License-Identifier: MIT
#include "support/control_groups.h"

#include <gtest/gtest.h>

namespace {

TEST(GroupPath, IsThatOfTheHierarchy) {
    const char* text =
        "5:cpuset:/no\n3:cpu,cpuacct:/a:b\n2:name=systemd2:/x\n1:name=systemd:/s\n0::/u/:cpu:/c\n";
    const std::pair<const char*, std::optional<std::string_view>> kCases[] = {
        {"", "/u/:cpu:/c"}, {"cpu", "/a:b"}, {"name=systemd", "/s"}, {"memory", std::nullopt}};
    for (const auto& [controller, path] : kCases) {
        EXPECT_EQ(support::GroupPath(text, controller), path) << controller;
    }
}

TEST(GroupPath, IsNothingInTextsOfAnotherForm) {
    for (const char* text : {"", "\n", "0", "0:", "0::", "0::x\n", "10::/y\n", "1::/y"}) {
        EXPECT_EQ(support::GroupPath(text, ""), std::nullopt) << text;
    }
}

}  // namespace
