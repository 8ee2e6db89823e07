// SPDX-License-Identifier: MIT
#include "groups/service_units.h"

#include <gtest/gtest.h>

namespace {

TEST(ControlGroups, TellWhetherServicesHaveAHierarchy) {
    const std::pair<std::string, bool> kCases[] = {
        {"1:name=systemd:/sshd.slice/ssh.service\n0::/x\n", true},
        {"12:pids:/a\n1:name=systemd:/\n", true},
        {"0::/sshd.slice/ssh.service\n", false},
        {"4:memory:/name=systemd:/\n0::/\n", false},
        {"", false},
    };
    for (const auto& [text, has] : kCases) {
        EXPECT_EQ(groups::HasServiceHierarchy(text), has) << text;
    }
}

TEST(ControlGroups, HaveAPathInTheUnifiedHierarchy) {
    const std::pair<std::string, std::optional<std::string>> kCases[] = {
        {"0::/sshd.slice/ssh.service\n", "sshd.slice/ssh.service"},
        {"4:pids:/x\n0::/a b\n", "a b"},
        {"0::/\n", ""},
        {"0::/../other\n", "../other"},
        {"10::/a\n", std::nullopt},
        {"1:name=systemd:/a\n", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, path] : kCases) {
        EXPECT_EQ(groups::UnifiedPath(text), path) << text;
    }
}

TEST(ServiceUnit, IsTheFirstComponentOrTheSliceOfTheSessionsService) {
    groups::ServiceUnits units([](const std::string& session) {
        return session == "7" ? "sshd" : session == "c2" ? "login" : "";
    });
    const std::pair<std::string, std::string> kCases[] = {
        {"SMBService.slice/smbd.service", "SMBService.slice"},
        {"system.slice/cron.service", "system.slice"},
        {"init.scope", "init.scope"},
        {"", ""},
        {"user.slice/user-1000.slice/session-7.scope", "sshd.slice"},
        {"user.slice/user-1000.slice/session-7.scope/deeper", "sshd.slice"},
        {"user.slice/user-1000.slice/session-c2.scope", "login.slice"},
        {"user.slice/user-1000.slice/session-8.scope", ""},
        {"user.slice/user-1000.slice/user@1000.service/app.slice/x.scope", "user.slice"},
        {"user.slice/user-1000.slice/session-7.service", "user.slice"},
        {"system.slice/session-7.scope", "system.slice"},
    };
    for (const auto& [path, unit] : kCases) {
        EXPECT_EQ(units.OfPath(path), unit) << path;
    }
}

TEST(ServiceUnit, AsksForASessionOnce) {
    int asked = 0;
    groups::ServiceUnits units([&](const std::string&) {
        ++asked;
        return "";
    });
    units.OfPath("user.slice/session-1.scope");
    units.OfPath("user.slice/session-1.scope");
    units.OfPath("user.slice/session-2.scope");
    EXPECT_EQ(asked, 2);
}

TEST(ServiceUnit, OfAProcessThatHasGoneIsNone) {
    EXPECT_EQ(groups::ServiceUnits().OfProcess("0"), "");
}

}  // namespace
