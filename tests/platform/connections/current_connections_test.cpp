// SPDX-License-Identifier: MIT
#include "vorn/platform/connection.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/support/child.h"
#include "tests/platform/support/private_network.h"
#include "tests/platform/support/scripted_calls.h"
#include "tests/platform/support/serving.h"
#include "tests/platform/support/temp_folder.h"
#include "vorn/platform/error.h"

namespace {

constexpr uid_t kNameless = 1234567;

/** A child that alone holds the server's end of a connection, as the given user. */
std::unique_ptr<Child> ServeAs(uid_t uid, ServedClient& client) {
    auto child = std::make_unique<Child>([uid] { EXPECT_EQ(setresuid(-1, uid, -1), 0); });
    client.Server().Reset();
    return child;
}

/** A child that runs a program, with the server's end at one descriptor. */
std::unique_ptr<Child> ServeBy(const std::string& program, int descriptor, ServedClient& client) {
    auto child =
        std::make_unique<Child>([&] { BecomeServer(program, client.Server().Get(), descriptor); });
    client.Server().Reset();
    return child;
}

TEST(Connections, AreNoneWithoutAClient) {
    InPrivateNetwork([] {
        const Listener listener("127.0.0.1");
        VORN_CURCONN stale;
        VORN_CURCONN* records = &stale;
        EXPECT_EQ(VORNCurConnGet(&records), 0);
        EXPECT_EQ(records, nullptr);
    });
}

TEST(Connections, ShowPeerAndUserOfTheServingProcess) {
    InPrivateNetwork([] {
        const Listener listener4("127.0.0.1");
        const Listener listener6("::1");
        const Listener dual("::");
        const struct {
            const Listener& listener;
            const char* address;
            uid_t uid;
        } rows[] = {{listener4, "127.0.0.2", 0},
                    {listener6, "::1", kNobody},
                    {dual, "127.0.0.3", kNobody},
                    {listener4, "127.0.0.4", kNameless}};
        for (const auto& row : rows) {
            ServedClient client(row.listener, row.address);
            const auto server = ServeAs(row.uid, client);
            EXPECT_EQ(SeenOf(server->Pid()), (List{{row.address, NameOf(row.uid)}}));
            EXPECT_EQ(SeenOf(getpid()), List()) << "the client's own end";
        }
        EXPECT_EQ(NameOf(kNameless), "1234567");
    });
}

TEST(Connections, OfOneProcessAreOneRecordOfWhatTheyHaveInCommon) {
    InPrivateNetwork([] {
        const Listener listener("127.0.0.1");
        const std::string user = NameOf(geteuid());
        const ServedClient first(listener, "127.0.0.9");
        const ServedClient again(listener, "127.0.0.9");
        EXPECT_EQ(SeenOf(getpid()), (List{{"127.0.0.9", user}}));
        const ServedClient other(listener, "127.0.0.2");
        EXPECT_EQ(SeenOf(getpid()), (List{{"unknown", user}}));
    });
}

TEST(Connections, OfOneProcessAreLookedForInItsWholeTable) {
    InPrivateNetwork([] {
        const TempFolder folder;
        const Listener listener("127.0.0.1");
        for (const char* name : {"unheardof", "nginx"}) {
            ServedClient low(listener, "127.0.0.2");
            ServedClient high(listener, "127.0.0.3");
            const std::string program = MakeServer(folder, name);
            const Child server([&] {
                dup2(high.Server().Get(), 200);
                BecomeServer(program, low.Server().Get(), 3);
            });
            low.Server().Reset();
            high.Server().Reset();
            EXPECT_EQ(SeenOf(server.Pid()), (List{{"unknown", NameOf(0)}})) << name;
        }
    });
}

TEST(Connections, BelongToEveryHolderOfTheSocket) {
    InPrivateNetwork([] {
        const Listener listener("127.0.0.1");
        const ServedClient client(listener, "127.0.0.2");
        const Child other([] { EXPECT_EQ(setresuid(-1, kNobody, -1), 0); });
        EXPECT_EQ(SeenOf(getpid()), (List{{"127.0.0.2", NameOf(0)}}));
        EXPECT_EQ(SeenOf(other.Pid()), (List{{"127.0.0.2", NameOf(kNobody)}}));
    });
}

TEST(Connections, AreNoClientsOnceNobodyListensOnThePort) {
    InPrivateNetwork([] {
        Listener listener("127.0.0.1");
        const ServedClient client(listener, "127.0.0.2");
        EXPECT_EQ(SeenOf(getpid()).size(), 1U);
        listener.Close();
        EXPECT_EQ(SeenOf(getpid()), List());
    });
}

TEST(Connections, GoOnWhenTheClientHasClosedItsHalf) {
    InPrivateNetwork([] {
        const Listener listener("127.0.0.1");
        ServedClient client(listener, "127.0.0.2");
        ASSERT_EQ(shutdown(client.Client().Get(), SHUT_WR), 0);
        EXPECT_EQ(SeenOf(getpid()), (List{{"127.0.0.2", NameOf(0)}}));
    });
}

TEST(Connections, EndWithTheirProcess) {
    InPrivateNetwork([] {
        const Listener listener("127.0.0.1");
        ServedClient client(listener, "127.0.0.2");
        auto server = ServeAs(0, client);
        const pid_t pid = server->Pid();
        EXPECT_EQ(SeenOf(pid).size(), 1U);
        server.reset();
        EXPECT_EQ(SeenOf(pid), List());
    });
}

TEST(Connections, AreFoundAtAnyDescriptor) {
    InPrivateNetwork([] {
        const TempFolder folder;
        const Listener listener("127.0.0.1");
        const struct {
            const char* program;
            int descriptor;
            List seen;
        } rows[] = {
            {"rsync", 3, {{"127.0.0.2", NameOf(0)}}},
            {"rsync", 200, {{"127.0.0.2", NameOf(0)}}},
            {"nginx", 200, {{"127.0.0.2", NameOf(0)}}},
            {"ganesha.nfsd", 200, {{"127.0.0.2", "unknown"}}},
            {"unheardof", 3, {{"127.0.0.2", NameOf(0)}}},
            {"unheardof", 200, {{"127.0.0.2", NameOf(0)}}},
        };
        for (const auto& row : rows) {
            ServedClient client(listener, "127.0.0.2");
            const auto server = ServeBy(MakeServer(folder, row.program), row.descriptor, client);
            EXPECT_EQ(SeenOf(server->Pid()), row.seen) << row.program << " " << row.descriptor;
        }
    });
}

TEST(Connections, OfAnSmbServerWithoutASessionHaveAHostAndNoUser) {
    InPrivateNetwork([] {
        const TempFolder folder;
        const Listener listener("127.0.0.1");
        ServedClient client(listener, "127.0.0.2");
        const auto server = ServeBy(MakeServer(folder, "smbd"), 40, client);
        EXPECT_EQ(SeenOf(server->Pid()), (List{{"127.0.0.2", "unknown"}}));
    });
}

TEST(Connections, OfSshAreLeftOutBeforeTheLogin) {
    InPrivateNetwork([] {
        const TempFolder folder;
        const Listener listener("127.0.0.1");
        ServedClient client(listener, "127.0.0.2");
        const auto server = ServeBy(MakeServer(folder, "sshd"), 4, client);
        EXPECT_EQ(SeenOf(server->Pid()), List());
    });
}

TEST(Connections, FailWhereTheProcessesCannotBeListedToTheEnd) {
    InPrivateNetwork([] {
        const Listener listener("127.0.0.1");
        const ServedClient client(listener, "127.0.0.2");
        Calls().getdents64.failFrom = 2;
        Calls().getdents64.error = EIO;
        VORN_CURCONN* records = nullptr;
        EXPECT_LT(VORNCurConnGet(&records), 0);
        EXPECT_EQ(records, nullptr);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_INTERNAL);
    });
}

TEST(Connections, NeedAPlaceForTheRecords) {
    EXPECT_LT(VORNCurConnGet(nullptr), 0);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
}

}  // namespace
