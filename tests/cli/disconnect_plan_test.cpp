// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/question/disconnect/host_facts.h"
#include "cli/question/disconnect/plan.h"

namespace {

using cli::Client;
using cli::FileOfProcess;
using cli::HostFacts;
using cli::Obstacle;
using cli::ServerProcess;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr ino_t kAlices = 1001;
constexpr ino_t kBobs = 1002;
constexpr ino_t kDatabase = 1003;

/** A process of a service; connected are pairs of socket and port. */
ServerProcess Process(pid_t parent, const std::string& program, const std::string& slice,
                      std::map<ino_t, uint16_t> connected = {}, std::set<uint16_t> listening = {}) {
    ServerProcess facts;
    facts.parent = parent;
    facts.start = 7;
    facts.program = program;
    facts.slice = slice;
    facts.unit = program + ".service";
    facts.sockets.connected = std::move(connected);
    facts.sockets.listening = std::move(listening);
    return facts;
}

HostFacts Host() {
    HostFacts host;
    host.services = {{"SMBService.slice", "SMB"}, {"sshd.slice", "SSH"}, {"ftpd.slice", "FTP"}};
    host.own = {900, 901};
    host.processes[1] = Process(0, "systemd", "");
    host.processes[1].init = true;
    return host;
}

/** The daemon 10, which has handed a connection of its own on to those that serve clients. */
HostFacts SambaHost() {
    HostFacts host = Host();
    const std::string slice = "SMBService.slice";
    host.processes[10] = Process(1, "smbd", slice, {{kDatabase, 40000}}, {445});
    host.processes[11] = Process(10, "smbd", slice, {{kDatabase, 40000}, {kAlices, 445}});
    host.processes[12] = Process(10, "smbd", slice, {{kDatabase, 40000}, {kBobs, 445}});
    host.clients = {{11, {"192.0.2.10", "alice", false}}, {12, {"192.0.2.11", "bob", false}}};
    return host;
}

/** alice's session 3: 21 and its half 22, her shell 23 and what she has detached, 24. */
HostFacts SshHost() {
    HostFacts host = Host();
    const std::string slice = "sshd.slice";
    const Client alice = {"192.0.2.10", "alice", true};
    host.processes[20] = Process(1, "sshd", slice, {}, {22});
    host.processes[21] = Process(20, "sshd", slice, {{kAlices, 22}});
    host.processes[22] = Process(21, "sshd", slice, {{kAlices, 22}});
    host.processes[23] = Process(22, "bash", slice);
    host.processes[24] = Process(1, "sleep", slice);
    for (const pid_t pid : {21, 22, 23, 24}) {
        host.processes[pid].session = 3;
        host.clients[pid] = alice;
    }
    host.processes[31] = Process(20, "sshd", slice, {{kBobs, 22}});
    host.processes[31].session = 4;
    host.clients[31] = alice;
    return host;
}

cli::Plan PlanFor(const HostFacts& host, const std::vector<pid_t>& holders) {
    std::vector<FileOfProcess> selected;
    for (const pid_t pid : holders) {
        selected.push_back({pid, "/volume1/photo/a", "photo/a", false});
    }
    return cli::MakePlan(host, selected, {});
}

std::vector<pid_t> Ended(const HostFacts& host, pid_t holder) {
    const cli::Plan plan = PlanFor(host, {holder});
    return plan.connections.empty() ? std::vector<pid_t>() : plan.connections.front().processes;
}

struct ObstacleCase {
    const char* what;
    HostFacts host;
    pid_t holder;
    Obstacle obstacle;
};

template <typename Change>
HostFacts With(HostFacts host, Change change) {
    change(host);
    return host;
}

TEST(DisconnectPlan, LeavesAlone) {
    const ObstacleCase kCases[] = {
        {"the daemon", SambaHost(), 10, Obstacle::kDaemon},
        {"a local process",
         With(SambaHost(),
              [](auto& h) { h.processes[50] = Process(1, "python3", "system.slice"); }),
         50, Obstacle::kNoClient},
        {"a child of a server, which serves nobody",
         With(SambaHost(),
              [](auto& h) { h.processes[50] = Process(11, "sh", "SMBService.slice"); }),
         50, Obstacle::kNoClient},
        {"another service",
         With(SambaHost(), [](auto& h) { h.processes[11].slice = "webdav.slice"; }), 11,
         Obstacle::kOtherService},
        {"a service without a name", With(SambaHost(), [](auto& h) { h.services.clear(); }), 11,
         Obstacle::kOtherService},
        {"the first of a PID namespace",
         With(SambaHost(), [](auto& h) { h.processes[11].init = true; }), 11, Obstacle::kInit},
        {"one whose sockets can't be told",
         With(SambaHost(), [](auto& h) { h.processes[11].sockets.known = false; }), 11,
         Obstacle::kUnknown},
        {"a daemon that serves its clients itself",
         With(SambaHost(),
              [](auto& h) {
                  h.processes[10].sockets.connected = {{kAlices, 445}};
                  h.clients = {{10, {"192.0.2.10", "alice", false}}};
              }),
         10, Obstacle::kDaemon},
        {"a server whose children serve others",
         With(SambaHost(), [](auto& h) { h.processes[12].parent = 11; }), 11, Obstacle::kDaemon},
        {"clients of several hosts in one process",
         With(SambaHost(),
              [](auto& h) {
                  h.processes[11].program = "ftpd";
                  h.clients[11].host = "unknown";
              }),
         11, Obstacle::kDaemon},
        {"its own connection",
         With(SshHost(),
              [](auto& h) {
                  h.processes[900] = Process(23, "sudo", "sshd.slice");
                  h.processes[901] = Process(900, "vorn-openfiles", "sshd.slice");
              }),
         23, Obstacle::kOwn},
        {"a server started by hand from a session",
         With(SshHost(),
              [](auto& h) {
                  h.processes[25] = Process(23, "smbd", "sshd.slice", {}, {1445});
                  h.processes[25].session = 3;
                  h.clients[25] = h.clients[23];
              }),
         25, Obstacle::kDaemon},
        {"what was detached from a session and is in no slice of its service",
         With(SshHost(), [](auto& h) { h.processes[24].slice = "system.slice"; }), 24,
         Obstacle::kApart},
    };
    for (const ObstacleCase& each : kCases) {
        SCOPED_TRACE(each.what);
        const cli::Plan plan = PlanFor(each.host, {each.holder});
        EXPECT_THAT(plan.connections, IsEmpty());
        ASSERT_EQ(plan.leftAlone.size(), 1U);
        EXPECT_EQ(plan.leftAlone.front().obstacle, each.obstacle);
    }
}

TEST(DisconnectPlan, EndsTheProcessOfAConnectionAlone) {
    EXPECT_THAT(Ended(SambaHost(), 11), ElementsAre(11));
    EXPECT_THAT(Ended(SambaHost(), 12), ElementsAre(12));
}

TEST(DisconnectPlan, ShutsNoSocketDownThatTheDaemonHas) {
    const cli::Plan plan = PlanFor(SambaHost(), {11});
    ASSERT_EQ(plan.connections.size(), 1U);
    EXPECT_THAT(plan.connections.front().sockets, ElementsAre(kAlices));
}

TEST(DisconnectPlan, HasBothHalvesOfAServerOfFtp) {
    HostFacts host = Host();
    const std::string slice = "ftpd.slice";
    host.processes[10] = Process(1, "vsftpd", slice, {}, {21});
    host.processes[11] = Process(10, "vsftpd", slice, {{kAlices, 21}}, {50000});
    host.processes[12] = Process(11, "vsftpd", slice, {{kAlices, 21}, {kDatabase, 50000}});
    host.clients[12] = {"192.0.2.10", "alice", false};
    EXPECT_THAT(Ended(host, 12), ElementsAre(11, 12));
    // For a moment the daemon has the client's socket as well.
    host.processes[10].sockets.connected = {{kAlices, 21}};
    EXPECT_THAT(Ended(host, 12), ElementsAre(11, 12));
}

TEST(DisconnectPlan, HasAllOfASessionAndNothingOfAnother) {
    for (const pid_t holder : {21, 22, 23, 24}) {
        EXPECT_THAT(Ended(SshHost(), holder), ElementsAre(21, 22, 23, 24)) << holder;
    }
    EXPECT_THAT(Ended(SshHost(), 31), ElementsAre(31));
}

TEST(DisconnectPlan, LeavesWhatAServerOfASessionHasStartedWithIt) {
    HostFacts host = SshHost();
    host.processes[25] = Process(1, "smbd", "sshd.slice", {}, {445});
    host.processes[26] = Process(25, "smbd-notifyd", "sshd.slice");
    host.processes[27] = Process(25, "smbd", "sshd.slice", {{kDatabase, 445}});
    for (const pid_t pid : {25, 26, 27}) {
        host.processes[pid].session = 3;
        host.clients[pid] = host.clients[23];
    }
    host.clients[27] = {"192.0.2.12", "carol", false};
    EXPECT_THAT(Ended(host, 23), UnorderedElementsAre(21, 22, 23, 24));
}

TEST(DisconnectPlan, TakesNoLoginThatAServerHasInherited) {
    // Another sshd, started by hand from session 3, without a login of its own for its clients.
    HostFacts host = SshHost();
    host.processes[40] = Process(23, "sshd", "sshd.slice", {}, {2222});
    host.processes[41] = Process(40, "sshd", "sshd.slice", {{kDatabase, 2222}});
    host.processes[42] = Process(41, "bash", "sshd.slice");
    for (const pid_t pid : {40, 41, 42}) {
        host.processes[pid].session = 3;
    }
    host.clients[40] = host.clients[23];
    host.clients[41] = {"192.0.2.12", "carol", true};
    host.clients[42] = host.clients[23];
    EXPECT_THAT(Ended(host, 23), UnorderedElementsAre(21, 22, 23, 24));
    // Its shell counts as alice's, whose session would be hit.
    EXPECT_THAT(Ended(host, 41), IsEmpty());
}

TEST(DisconnectPlan, TellsWhatGoesWithTheSelected) {
    const std::vector<FileOfProcess> selected = {{11, "/volume1/photo/a", "photo/a", false}};
    const std::vector<FileOfProcess> held = {{11, "/volume1/photo/a", "/volume1/photo/a", false},
                                             {11, "/volume2/b", "/volume2/b", false},
                                             {12, "/volume2/c", "/volume2/c", false}};
    const cli::Plan plan = cli::MakePlan(SambaHost(), selected, held);
    ASSERT_EQ(plan.connections.size(), 1U);
    ASSERT_EQ(plan.connections.front().others.size(), 1U);
    EXPECT_EQ(plan.connections.front().others.front().path, "/volume2/b");
}

TEST(DisconnectPlan, NamesTheUserWhoHoldsTheFiles) {
    HostFacts host = Host();
    const std::string slice = "ftpd.slice";
    host.processes[50] = Process(1, "vsftpd", slice, {}, {21});
    host.processes[51] = Process(50, "vsftpd", slice, {{kAlices, 21}});
    host.processes[52] = Process(51, "vsftpd", slice, {{kAlices, 21}});
    host.clients = {{51, {"192.0.2.10", "nobody", false}}, {52, {"192.0.2.10", "alice", false}}};
    const cli::Plan plan = PlanFor(host, {52});
    ASSERT_EQ(plan.connections.size(), 1U);
    EXPECT_THAT(plan.connections.front().processes, ElementsAre(51, 52));
    EXPECT_EQ(plan.connections.front().client.user, "alice");
    host.clients.erase(52);
    host.clients[51].ssh = true;
    host.processes[51].program = "sshd";
    EXPECT_EQ(PlanFor(host, {52}).connections.front().client.user, "nobody") << "of the head";
}

TEST(DisconnectPlan, TellsALaterProcessOfTheSameIdApart) {
    const auto connection = PlanFor(SambaHost(), {11}).connections.front();
    EXPECT_TRUE(cli::IsSame(connection, connection));
    const HostFacts hosts[] = {
        With(SambaHost(), [](auto& h) { h.processes[11].start = 8; }),
        With(SambaHost(), [](auto& h) { h.clients[11].host = "192.0.2.99"; }),
        With(SambaHost(), [](auto& h) { h.clients[11].user = "bob"; }),
    };
    for (const HostFacts& host : hosts) {
        EXPECT_FALSE(cli::IsSame(connection, PlanFor(host, {11}).connections.front()));
    }
}

TEST(ServerProcess, KnowsTheFirstOfANamespace) {
    EXPECT_TRUE(cli::IsInit("Name:\tx\nNSpid:\t4711\t1\n"));
    EXPECT_TRUE(cli::IsInit("Name:\tx\nNSpid:\t1\n"));
    EXPECT_TRUE(cli::IsInit(""));
    EXPECT_FALSE(cli::IsInit("Name:\tx\nNSpid:\t4711\n"));
    EXPECT_FALSE(cli::IsInit("Name:\tx\nNSpid:\t4711\t21\n"));
}

}  // namespace
