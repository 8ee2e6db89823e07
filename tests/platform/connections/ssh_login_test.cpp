// SPDX-License-Identifier: MIT
#include "platform/linux/connections/ssh_login.h"

#include <gtest/gtest.h>

namespace {

using namespace vornplatform;

constexpr uid_t kSeparated = 103;
constexpr uid_t kAlice = 5001;
constexpr pid_t kDaemon = 10;
constexpr pid_t kMonitor = 20;
constexpr pid_t kHalf = 30;

/** The process of root that takes a connection over from the daemon. */
SshProcess MonitorProcess() {
    SshProcess process;
    process.pid = kMonitor;
    process.parent = kDaemon;
    process.program = "sshd";
    return process;
}

/** The half that the monitor forks, which runs as the given user. */
SshProcess Half(uid_t uid) {
    SshProcess process;
    process.pid = kHalf;
    process.parent = kMonitor;
    process.uid = uid;
    process.program = "sshd";
    return process;
}

SshProcess LoggedIn(SshProcess process, std::uint32_t uid, std::uint32_t session) {
    process.loginUid = uid;
    process.session = session;
    return process;
}

void ExpectNobody(const std::vector<SshProcess>& processes) {
    EXPECT_FALSE(JudgeSshConnection(processes, SocketRole::kServed, kSeparated));
}

void ExpectLogin(const std::vector<SshProcess>& processes, uid_t user,
                 std::optional<std::uint32_t> session) {
    const auto login = JudgeSshConnection(processes, SocketRole::kServed, kSeparated);
    ASSERT_TRUE(login);
    EXPECT_EQ(login->user, user);
    EXPECT_EQ(login->session, session);
}

TEST(SshLogin, IsTheOneThatTheKernelKeeps) {
    ExpectLogin({LoggedIn(MonitorProcess(), kAlice, 4), LoggedIn(Half(kAlice), kAlice, 4)}, kAlice,
                4);
}

TEST(SshLogin, OutweighsTheUserOfTheUnprivilegedHalf) {
    ExpectLogin({LoggedIn(MonitorProcess(), kAlice, 4), LoggedIn(Half(5002), kAlice, 4)}, kAlice,
                4);
}

TEST(SshLogin, OfRootHasAnIdOfItsOwnToo) {
    ExpectLogin({LoggedIn(MonitorProcess(), 0, 3)}, 0, 3);
}

TEST(SshLogin, IsTheUserOfTheUnprivilegedHalfWhereTheKernelKeepsNone) {
    ExpectLogin({MonitorProcess(), Half(kAlice)}, kAlice, std::nullopt);
    ExpectLogin({Half(kAlice), MonitorProcess()}, kAlice, std::nullopt);
}

TEST(SshLogin, OfRootWithoutAnIdShowsByItsSessions) {
    SshProcess monitor = MonitorProcess();
    ExpectNobody({monitor});
    monitor.hasChildren = true;
    ExpectLogin({monitor}, 0, std::nullopt);
}

TEST(SshLogin, IsNobodysWhileTheUnauthenticatedHalfTalks) {
    SshProcess monitor = MonitorProcess();
    monitor.hasChildren = true;
    ExpectNobody({monitor, Half(kSeparated)});
    ExpectNobody({LoggedIn(monitor, kAlice, 4), LoggedIn(Half(kSeparated), kAlice, 4)});
    SshProcess auth = Half(0);
    auth.program = "sshd-auth";
    ExpectNobody({monitor, auth});
}

TEST(SshLogin, IsNotTheSessionThatTheServerWasStartedFrom) {
    SshProcess monitor = LoggedIn(MonitorProcess(), 5002, 9);
    monitor.parentSession = 9;
    ExpectNobody({monitor});
    ExpectLogin({monitor, LoggedIn(Half(kAlice), 5002, 9)}, kAlice, std::nullopt);
    monitor.session = 11;
    ExpectLogin({monitor, LoggedIn(Half(kAlice), 5002, 11)}, 5002, 11);
}

TEST(SshLogin, IsNotTheSessionThatAnOrdinaryUserBroughtAlong) {
    // As a user's own program named sshd looks that has left its login's processes.
    SshProcess forged = LoggedIn(MonitorProcess(), kAlice, 4);
    ExpectLogin({forged}, kAlice, 4);
    forged.realUid = forged.uid = 65534;
    ExpectNobody({forged});
    forged.uid = 0;
    ExpectNobody({forged});
    forged.uid = forged.realUid;
    forged.hasChildren = true;
    ExpectLogin({forged}, 65534, std::nullopt);
}

TEST(SshLogin, KeepsItsSessionWhileTheMonitorActsAsTheUser) {
    SshProcess monitor = LoggedIn(MonitorProcess(), kAlice, 4);
    monitor.uid = kAlice;
    ExpectLogin({monitor, LoggedIn(Half(kAlice), kAlice, 4)}, kAlice, 4);
}

TEST(SshLogin, NeedsNoSeparationUserOnTheHost) {
    const auto login =
        JudgeSshConnection({MonitorProcess(), Half(kAlice)}, SocketRole::kServed, std::nullopt);
    ASSERT_TRUE(login);
    EXPECT_EQ(login->user, kAlice);
}

TEST(SshLogin, OfRootInTwoHalvesShowsByTheSessionsOfTheSecond) {
    SshProcess monitor = MonitorProcess();
    monitor.hasChildren = true;
    SshProcess half = Half(0);
    monitor.program = half.program = "sshd-session";
    // As any connection looks right after the fork of what is to become its half without rights.
    ExpectNobody({monitor, half});
    half.hasChildren = true;
    ExpectLogin({monitor, half}, 0, std::nullopt);
    ExpectLogin({half, monitor}, 0, std::nullopt);
    half.program = "sshd-auth";
    ExpectNobody({monitor, half});
}

/** Whether these have a login over a socket that nobody listens on. */
bool IsLoginWithoutListener(const std::vector<SshProcess>& processes) {
    return JudgeSshConnection(processes, SocketRole::kUnlistened, kSeparated).has_value();
}

TEST(SshLogin, OutlivesTheListener) {
    SshProcess alone = MonitorProcess();
    alone.hasChildren = true;
    EXPECT_TRUE(IsLoginWithoutListener({LoggedIn(MonitorProcess(), kAlice, 4)}));
    EXPECT_TRUE(IsLoginWithoutListener({MonitorProcess(), Half(kAlice)}));
    EXPECT_TRUE(IsLoginWithoutListener({alone}));
}

TEST(SshLogin, WithoutAListenerIsGivenAwayByRootAlone) {
    SshProcess forged = MonitorProcess();
    forged.hasChildren = true;
    forged.uid = 65534;
    forged.realUid = 65534;
    EXPECT_FALSE(IsLoginWithoutListener({forged}));
    EXPECT_FALSE(IsLoginWithoutListener({forged, Half(kAlice)}));
    EXPECT_FALSE(IsLoginWithoutListener({LoggedIn(forged, kAlice, 4)}));
}

TEST(SshLogin, IsNotWhatAListeningServerHasCalledOutTo) {
    SshProcess daemon = MonitorProcess();
    daemon.hasChildren = true;
    daemon.listens = true;
    EXPECT_FALSE(IsLoginWithoutListener({daemon}));
    EXPECT_FALSE(IsLoginWithoutListener({LoggedIn(daemon, kAlice, 4)}));
    EXPECT_FALSE(IsLoginWithoutListener({daemon, Half(kAlice)}));
    // Its clients' ports, which the half without rights listens on, are another matter.
    SshProcess half = Half(kAlice);
    half.listens = true;
    EXPECT_TRUE(IsLoginWithoutListener({MonitorProcess(), half}));
}

}  // namespace
