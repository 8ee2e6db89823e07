// SPDX-License-Identifier: MIT
#include "tests/unit/support/connection_test.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AncestorWalk : public unit::ConnectionTest {
protected:
    void SetUp() override {
        platform.connections = {{1000, "10.0.0.1", "ann", kSsh}, {2000, "10.0.0.2", "bob", kSsh}};
    }
};

TEST_F(AncestorWalk, StopsAtAnAncestorThatAnEarlierWalkPassed) {
    SetParents({{1001, 1000}, {1002, 1001}, {1003, 1001}});
    SetSshEntries({"1002", "1003"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann", "10.0.0.1 ann"));
    EXPECT_THAT(Lookups(), ElementsAre(1002, 1001, 1003));
    EXPECT_THAT(journal.CallsOf("KLIBCProcFree"),
                ElementsAre("KLIBCProcFree(1002)", "KLIBCProcFree(1001)", "KLIBCProcFree(1003)"));
}

TEST_F(AncestorWalk, FreesEachProcessBeforeItAsksForTheNext) {
    SetParents({{1001, 1000}, {1002, 1001}});
    SetSshEntries({"1002"});

    Run();
    EXPECT_THAT(journal.Calls(),
                ElementsAre("VORNCurConnGet(null)", "KLIBCProcGetByPid(1002, null)",
                            "KLIBCProcFree(1002)", "KLIBCProcGetByPid(1001, null)",
                            "KLIBCProcFree(1001)", "free(connection block)"));
}

TEST_F(AncestorWalk, SettlesLaterEntriesOfTheSameProcessWhateverTheirService) {
    SetParents({{1001, 1000}});
    SetEntries({{"1001", "SMB"}, {"1001", "SSH"}, {"1001", "SSH"}, {"1001", "SMB"}});

    EXPECT_THAT(Run(), ElementsAre("- -", "10.0.0.1 ann", "10.0.0.1 ann", "10.0.0.1 ann"));
    EXPECT_THAT(Lookups(), ElementsAre(1001));
}

TEST_F(AncestorWalk, FindsTheNearestSshConnection) {
    SetParents({{3, 2000}, {2000, 1000}, {4, 30}, {30, 1000}});
    platform.connections.push_back({30, "10.0.0.3", "cat", kSmb});
    SetSshEntries({"3", "4"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.2 bob", "10.0.0.1 ann"));
}

TEST_F(AncestorWalk, TakesTheTextOfThePidNotItsNumberForTheProcess) {
    SetParents({{1001, 1000}});
    SetSshEntries({"01000", "01001", "1001"});

    EXPECT_THAT(Run(), Each("10.0.0.1 ann"));
    EXPECT_THAT(Lookups(), ElementsAre(1001));
}

TEST_F(AncestorWalk, HasNoLimitOfDepth) {
    for (int pid = 10001; pid <= 30000; ++pid) {
        SetParents({{pid, pid == 10001 ? 1000 : pid - 1}});
    }
    SetSshEntries({"30000"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann"));
    EXPECT_EQ(Lookups().size(), 20000U);
}

TEST_F(AncestorWalk, EndsAtAParentOfOneOrLess) {
    for (int top : {1, 0, -1, -2147483647 - 1}) {
        SetParents({{50, 40}, {40, top}});
        SetSshEntries({"50"});
        EXPECT_THAT(Run(), ElementsAre("- -")) << top;
        EXPECT_THAT(Lookups(), ElementsAre(50, 40)) << top;
    }
    SetParents({{50, 2}, {2, 0}});
    SetSshEntries({"50"});
    EXPECT_THAT(Run(), ElementsAre("- -"));
    EXPECT_THAT(Lookups(), ElementsAre(50, 2));
}

TEST_F(AncestorWalk, EndsWhereTheParentIsInitEvenIfThatHasAConnection) {
    platform.connections.push_back({1, "10.0.0.9", "root", kSsh});
    SetParents({{50, 1}});
    SetSshEntries({"50"});

    EXPECT_THAT(Run(), ElementsAre("- -"));
}

TEST_F(AncestorWalk, RemembersWhomItPassedInVainButNotWhereItEnded) {
    SetParents({{60, 50}, {50, 40}, {40, 1}});
    SetSshEntries({"60", "60", "50", "40", "40"});

    EXPECT_THAT(Run(), Each("- -"));
    EXPECT_THAT(Lookups(), ElementsAre(60, 50, 40, 40, 40));
}

TEST_F(AncestorWalk, EndsAtAProcessThatHasGoneAndAsksForItAgain) {
    SetParents({{50, 40}});
    SetSshEntries({"50", "70", "70", "50", "40"});

    EXPECT_THAT(Run(), Each("- -"));
    EXPECT_THAT(Lookups(), ElementsAre(50, 40, 70, 70, 40));
}

TEST_F(AncestorWalk, EndsAtAFailureThatComesWithARecord) {
    platform.processes[50] = {1000, -1, true};
    SetSshEntries({"50", "50"});

    EXPECT_THAT(Run(), Each("- -"));
    EXPECT_THAT(journal.CallsOf({"KLIBCProcGetByPid", "KLIBCProcFree"}),
                ElementsAre("KLIBCProcGetByPid(50, null)", "KLIBCProcFree(50)",
                            "KLIBCProcGetByPid(50, null)", "KLIBCProcFree(50)"));
}

TEST_F(AncestorWalk, EndsAtASuccessThatComesWithoutARecord) {
    platform.processes[50] = {1000, 0, false};
    SetSshEntries({"50"});

    EXPECT_THAT(Run(), ElementsAre("- -"));
    EXPECT_THAT(journal.CallsOf("KLIBCProcFree"), IsEmpty());
}

TEST_F(AncestorWalk, GoesOnAfterAnyResultThatIsNotNegative) {
    platform.processes[50] = {1000, 3, true};
    SetSshEntries({"50"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann"));
}

TEST_F(AncestorWalk, StopsAtAConnectionOfPidZeroWithNothing) {
    platform.connections = {{0, "10.0.0.1", "ann", kSsh}};
    SetSshEntries({"00", "0"});

    EXPECT_THAT(Run(), ElementsAre("- -", "10.0.0.1 ann"));
    EXPECT_THAT(Lookups(), IsEmpty());
}

TEST_F(AncestorWalk, TakesTheConnectionOfAnEntryTwoStopsAway) {
    SetParents({{1002, 1000}, {1003, 1002}, {1004, 1003}});
    SetSshEntries({"1002", "1003", "1004"});

    EXPECT_THAT(Run(), Each("10.0.0.1 ann"));
    EXPECT_THAT(Lookups(), ElementsAre(1002, 1003, 1004));
}

// 12 is remembered as stopping at 11, and 11 is nobody's entry and nobody's connection.
TEST_F(AncestorWalk, FollowsOneStepAndNoFurther) {
    SetParents({{10, 11}, {11, 1000}, {13, 12}, {12, 11}, {14, 12}});
    SetSshEntries({"10", "13", "14", "14", "12"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann", "10.0.0.1 ann", "- -", "- -", "- -"));
    EXPECT_THAT(Lookups(), ElementsAre(10, 11, 13, 12, 14));
}

TEST_F(AncestorWalk, ReachesByItsOneStepAnEntrySettledBefore) {
    SetParents({{10, 11}, {11, 1000}, {13, 12}, {12, 11}, {14, 12}});
    SetSshEntries({"10", "11", "13", "14"});

    EXPECT_THAT(Run(), Each("10.0.0.1 ann"));
}

TEST_F(AncestorWalk, ReachesByItsOneStepAConnectionOfAnotherType) {
    platform.connections.push_back({11, "10.0.0.3", "cat", kSmb});
    SetParents({{10, 11}, {11, 1000}, {13, 12}, {12, 11}, {14, 12}});
    SetSshEntries({"10", "13", "14"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann", "10.0.0.1 ann", "10.0.0.3 cat"));
}

TEST_F(AncestorWalk, ThatIsTheThirdAboveOneInVainReachesNobody) {
    SetParents({{50, 40}, {40, 1}, {60, 50}, {70, 60}});
    SetSshEntries({"50", "60", "70", "70"});

    EXPECT_THAT(Run(), Each("- -"));
    EXPECT_THAT(Lookups(), ElementsAre(50, 40, 60, 70));
}

TEST_F(AncestorWalk, ForgetsEverythingAfterTheCall) {
    SetParents({{1001, 1000}});
    SetSshEntries({"1001"});
    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann"));

    platform.connections = {{2000, "10.0.0.2", "bob", kSsh}};
    platform.processes[1001].ppid = 2000;
    EXPECT_THAT(Run(), ElementsAre("10.0.0.2 bob"));
}
