// SPDX-License-Identifier: MIT
#include "platform/linux/findings/process_sight.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace vornplatform;
using testing::HasSubstr;

ProcessSight OfRoot() {
    ProcessSight sight;
    sight.isRoot = true;
    return sight;
}

TEST(Sight, OfEveryProcessIsNothingToTell) {
    EXPECT_TRUE(JudgeSight(OfRoot(), false).empty());
    ProcessSight own;
    EXPECT_TRUE(JudgeSight(own, false).empty()) << "not even for a user who sees all there is";
}

TEST(Sight, IsToldByWhatKeepsIt) {
    struct Case {
        bool root, userSpace, privateSpace, hides;
        size_t unseen;
        const char* said;
    };
    const Case kCases[] = {
        {false, false, false, false, 3, "not running as root"},
        {true, true, false, false, 1, "root of a user namespace is not root over"},
        {true, false, false, false, 9, "root lacks CAP_SYS_PTRACE or CAP_DAC_READ_SEARCH"},
        {true, false, true, false, 0, "this is a PID namespace of its own"},
        {false, false, false, true, 0, "mounted with hidepid"},
    };
    for (const Case& each : kCases) {
        ProcessSight sight;
        sight.isRoot = each.root;
        sight.isUserSpace = each.userSpace;
        sight.isPrivate = each.privateSpace;
        sight.hidesOthers = each.hides;
        sight.unseen.assign(each.unseen, 4711);
        const Findings findings = JudgeSight(sight, false);
        ASSERT_EQ(findings.size(), 1U) << each.said;
        EXPECT_THAT(findings[0].text, HasSubstr(each.said));
        EXPECT_TRUE(findings[0].costsAnswers && findings[0].state == VORN_FINDING_MISSING);
        EXPECT_FALSE(findings[0].advice.empty());
    }
}

TEST(Sight, NamesAFewOfManyProcesses) {
    ProcessSight sight = OfRoot();
    sight.unseen = {1, 2, 3, 4, 5, 6, 7};
    EXPECT_THAT(JudgeSight(sight, false)[0].text,
                HasSubstr("7 processes can't be examined (1, 2, 3, 4, 5 and 2 more)"));
}

TEST(Sight, ReachesOutOfANamespaceWhoseVolumesNobodyElseUses) {
    ProcessSight sight = OfRoot();
    sight.isPrivate = true;
    EXPECT_TRUE(JudgeSight(sight, true).empty());
}

}  // namespace
