// SPDX-License-Identifier: MIT
#include "platform/linux/services/process_groups.h"

#include <gtest/gtest.h>

#include "platform/linux/services/unit_slices.h"

namespace {

using namespace vornplatform;

TEST(ProcessGroups, AreReadFromTheTextOfAProcess) {
    const ProcessGroups both =
        ParseProcessGroups("9:cpu:/x\n1:name=systemd:/a.slice\n0::/b.slice/b:c.service\n");
    EXPECT_EQ(both.named, "/a.slice");
    EXPECT_EQ(both.unified, "/b.slice/b:c.service");
    const ProcessGroups none = ParseProcessGroups("4:memory:/name=systemd:/x\n10::/y\n");
    EXPECT_FALSE(none.named || none.unified);
}

TEST(ProcessGroups, OfSystemdAreTheUnifiedOnesWhereTheyAreInUse) {
    const std::pair<ProcessGroups, std::string> kCases[] = {{{"/a", "/b"}, "/b"},
                                                            {{"/a", "/"}, "/a"},
                                                            {{"/a", std::nullopt}, "/a"},
                                                            {{std::nullopt, "/"}, "/"},
                                                            {{std::nullopt, std::nullopt}, "/"}};
    for (const auto& [groups, path] : kCases) {
        EXPECT_EQ((GroupedProcess{1, groups}).Path(), path);
    }
}

TEST(GroupPath, NamesSliceServiceAndSession) {
    struct Case {
        const char *path, *slice, *service, *session;
    };
    const Case kCases[] = {
        {"/sshd.slice/ssh.service", "sshd.slice", "ssh.service", ""},
        {"/", "", "", ""},
        {"/user.slice/user-1.slice/session-3.scope", "user.slice", "", "session-3.scope"},
        {"/user.slice/user-1.slice/user@1.service/app.slice/x.service", "user.slice", "x.service",
         ""},
        {"/system.slice/session-3.scope", "system.slice", "", ""},
    };
    for (const Case& each : kCases) {
        EXPECT_EQ(SliceOf(each.path), each.slice) << each.path;
        EXPECT_EQ(ServiceOf(each.path), each.service) << each.path;
        EXPECT_EQ(SessionScopeOf(each.path), each.session) << each.path;
    }
}

TEST(Template, IsThatOfAnInstance) {
    const std::pair<const char*, const char*> kCases[] = {{"ssh@1-2.service", "ssh@.service"},
                                                          {"ssh@.service", ""},
                                                          {"ssh.service", ""},
                                                          {"a@b", ""}};
    for (const auto& [unit, expected] : kCases) {
        EXPECT_EQ(TemplateOf(unit), expected) << unit;
    }
}

}  // namespace
