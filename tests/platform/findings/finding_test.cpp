// SPDX-License-Identifier: MIT
#include "platform/linux/findings/finding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/findings/answer_findings.h"
#include "platform/linux/findings/client_findings.h"
#include "platform/linux/findings/host_findings.h"
#include "platform/linux/support/lost_sources.h"
#include "vorn/platform/error.h"

namespace {

using namespace vornplatform;
using testing::ElementsAre;

TEST(FindingBlock, HoldsRecordsAndTexts) {
    const FindingBlock block = BuildFindingBlock(
        {{"a", VORN_FINDING_WARNING, "what", "do", true}, {"b", VORN_FINDING_OK, "well"}});
    ASSERT_NE(block, nullptr);
    const VORN_FINDING* found = block.get();
    EXPECT_STREQ(found[0].szSubject, "a");
    EXPECT_EQ(found[0].state, VORN_FINDING_WARNING);
    EXPECT_EQ(found[0].costsAnswers, 1);
    EXPECT_STREQ(found[0].szText, "what");
    EXPECT_STREQ(found[0].szAdvice, "do");
    EXPECT_EQ(found[1].costsAnswers, 0);
    EXPECT_STREQ(found[1].szAdvice, "");
    EXPECT_EQ(BuildFindingBlock({}), nullptr);
}

TEST(Findings, AreAskedForByAScope) {
    VORN_FINDING* findings = nullptr;
    EXPECT_LT(VORNFindingGet(2, &findings), 0);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
    EXPECT_LT(VORNFindingGet(VORN_FINDINGS_OF_HOST, nullptr), 0);
    const int count = VORNFindingGet(VORN_FINDINGS_OF_HOST, &findings);
    const FindingBlock owner(findings);
    ASSERT_GT(count, 0);
    for (int i = 0; i < count; ++i) {
        EXPECT_STRNE(findings[i].szSubject, "");
        EXPECT_STRNE(findings[i].szText, "");
    }
}

TEST(LostSource, IsAFindingUntilItIsWell) {
    NoteLost(Source::kSmbUsers, "smbstatus is not installed", "install it");
    const Findings findings = FindingsOfAnswers();
    ASSERT_FALSE(findings.empty());
    EXPECT_EQ(findings[0].subject + ": " + findings[0].text,
              "SMB sessions: smbstatus is not installed");
    EXPECT_TRUE(findings[0].costsAnswers);
    NoteWell(Source::kSmbUsers);
    EXPECT_TRUE(LostSources().empty());
}

TEST(Volumes, StandInTheOrderOfTheirNumbers) {
    std::vector<std::string> volumes = {"/volume10", "/volume2", "/volumeUSB1", "/volume1"};
    OrderVolumes(volumes);
    EXPECT_THAT(volumes, ElementsAre("/volume1", "/volume2", "/volume10", "/volumeUSB1"));
}

TEST(SharedFolder, IsOneWithAllWhoExportIt) {
    EXPECT_THAT(DescribeShares({{"photo", "/volume1/photo", "Samba"},
                                {"music", "/volume1/music", "Samba"},
                                {"photo", "/volume1/photo", "NFS"},
                                {"backup", "/volume2/backup"}}),
                ElementsAre("photo (NFS, Samba)", "music (Samba)", "backup"));
}

TEST(Login, IsOneHoweverManyProcessesItHas) {
    // 10 and 20 serve logins of the kernel's sessions 7 and 8; 30 is of a server that was started
    // from session 5, as is 40; 99 was detached from 10's login.
    const std::map<pid_t, LoginProcess> processes = {{10, {1, 7, std::nullopt}},
                                                     {11, {10, 7, 7}},
                                                     {12, {11, 7, 7}},
                                                     {99, {1, 7, std::nullopt}},
                                                     {20, {1, 8, std::nullopt}},
                                                     {30, {3, 5, 5}},
                                                     {31, {30, 5, 5}},
                                                     {40, {3, 5, 5}},
                                                     {50, {1, std::nullopt, std::nullopt}}};
    std::set<pid_t> pids;
    for (const auto& [pid, process] : processes) {
        pids.insert(pid);
    }
    EXPECT_EQ(CountLogins(pids, [&](pid_t pid) { return processes.at(pid); }), 5U);
    EXPECT_EQ(CountLogins({}, [](pid_t) { return LoginProcess(); }), 0U);
}

}  // namespace
