// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/socket_holder.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/support/host_error.h"
#include "support/descriptor.h"
#include "tests/platform/support/child.h"
#include "tests/platform/support/private_root.h"
#include "tests/platform/support/scripted_calls.h"
#include "tests/platform/support/serving.h"

namespace {

using namespace vornplatform;

constexpr std::uint16_t kPort = 2000;
constexpr int kLow = 3;
constexpr int kHigh = 200;

/** Calls that it takes to list the descriptors of a process. */
constexpr int kTable = 2;

/** Stands for a socket of TCP: what counts is the number of its inode. */
class Socket {
public:
    Socket() {
        struct stat info {};
        EXPECT_EQ(fstat(socket_.Get(), &info), 0);
        inode_ = info.st_ino;
    }
    int Get() const { return socket_.Get(); }
    std::uint64_t Inode() const { return inode_; }

private:
    support::Descriptor socket_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::uint64_t inode_ = 0;
};

/** Which of the processes hold a socket, by their position. */
using Found = std::vector<std::ptrdiff_t>;

/** Programs with sockets, all started before the search, and what it does to find them. */
class SocketHolders : public testing::Test {
protected:
    SocketHolders() { Add(listener_, SocketRole::kListener); }

    void Add(const Socket& socket, SocketRole role = SocketRole::kServed,
             std::uint16_t port = kPort) {
        sockets_.emplace(socket.Inode(), ClientSocket{role, "192.0.2.9", port});
    }

    /** Runs a program of this name with a socket at a descriptor. */
    void Run(const std::string& name, const Socket& socket, int descriptor) {
        const std::string program = MakeServer(folder_, name);
        programs_.push_back(
            std::make_unique<Child>([&] { BecomeServer(program, socket.Get(), descriptor); }));
    }

    Found Find() {
        timesReadAgain_ = 0;
        Calls().getdents64.calls = 0;
        std::vector<pid_t> pids;
        for (const auto& program : programs_) {
            pids.push_back(program->Pid());
        }
        const auto readAgain = [this] {
            ++timesReadAgain_;
            return isClosed_ ? ClientSockets() : sockets_;
        };
        Found found;
        for (const auto& holder : FindSocketHolders(pids, sockets_, readAgain, memory_)) {
            found.push_back(std::find(pids.begin(), pids.end(), holder.pid) - pids.begin());
        }
        return found;
    }

    /** Whether the last search went through whole tables for want of a holder. */
    bool HasLookedEverywhere() const {
        return Calls().getdents64.calls >= kTable * static_cast<int>(programs_.size());
    }

    const CallScript script_;
    const TempFolder folder_;
    const Socket listener_;
    const Socket client_;
    ClientSockets sockets_;
    std::vector<std::unique_ptr<Child>> programs_;
    bool isClosed_ = false; /**< all sockets, when they are read again */
    int timesReadAgain_ = 0;
    SearchMemory::Clock::time_point now_;
    SearchMemory memory_{[this] { return now_; }};
};

TEST_F(SocketHolders, OfAKnownNameAreFoundInTheWholeTable) {
    Add(client_);
    Run("rsync", client_, kHigh);
    EXPECT_EQ(Find(), Found{0});
    EXPECT_EQ(timesReadAgain_, 0);
}

TEST_F(SocketHolders, AreNoneWhereTheProcessGoesMeanwhile) {
    const struct {
        const char* name;
        int descriptor;
    } rows[] = {{"rsync", kHigh}, {"unheardof", kLow}, {"unheardof", kHigh}};
    Add(client_);
    for (const auto& row : rows) {
        programs_.clear();
        Run(row.name, client_, row.descriptor);
        for (const int error : {ENOENT, ESRCH}) {
            Calls() = {};
            Calls().getdents64.failFrom = 1;
            Calls().getdents64.error = error;
            EXPECT_EQ(Find(), Found()) << row.name << " " << row.descriptor << " " << error;
        }
    }
}

TEST_F(SocketHolders, FailWhereTheTableCannotBeReadToItsEnd) {
    Add(client_);
    for (const char* name : {"rsync", "unheardof"}) {
        programs_.clear();
        Run(name, client_, kHigh);
        Calls().getdents64.failFrom = 1;
        Calls().getdents64.error = EIO;
        EXPECT_THROW(Find(), HostError) << name;
    }
}

TEST_F(SocketHolders, AreLookedForAtLowDescriptorsWhereThoseDo) {
    const Socket other;
    Add(client_);
    Run("vsftpd", client_, kLow);
    Run("unheardof", other, kHigh);
    EXPECT_EQ(Find(), Found{0});
    EXPECT_EQ(timesReadAgain_, 0);
    EXPECT_EQ(Calls().getdents64.calls, 0);
}

TEST_F(SocketHolders, OfOtherNamesAreFoundFurtherUp) {
    const Socket second;
    Add(client_);
    Add(second);
    Run("unheardof", client_, kHigh);
    Run("vsftpd", second, kLow);
    Run("another", client_, kHigh);
    EXPECT_EQ(Find(), (Found{0, 1, 2}));
    EXPECT_EQ(timesReadAgain_, 1);
    EXPECT_EQ(Calls().getdents64.calls, 3 * kTable) << "each table is to be read once";
}

TEST_F(SocketHolders, AreNotLookedForEverywhereOnceTheSocketIsClosed) {
    Add(client_);
    Run("unheardof", client_, kHigh);
    isClosed_ = true;
    EXPECT_EQ(Find(), Found());
    EXPECT_FALSE(HasLookedEverywhere());
    isClosed_ = false;
    EXPECT_EQ(Find(), Found{0}) << "nothing was learned of it";
}

TEST_F(SocketHolders, FurtherUpAreKnownByTheirProgramTheNextTime) {
    Add(client_);
    Run("unheardof", client_, kHigh);
    Run("another", listener_, kLow);
    EXPECT_EQ(Find(), Found{0});
    EXPECT_EQ(timesReadAgain_, 1);
    const Socket next;
    Add(next);
    Run("unheardof", next, kHigh);
    EXPECT_EQ(Find(), (Found{0, 2}));
    EXPECT_EQ(timesReadAgain_, 0);
    EXPECT_FALSE(HasLookedEverywhere());
}

TEST_F(SocketHolders, FurtherUpAreFoundAsWellOnceTheyHaveHandedTheSocketOn) {
    Add(client_);
    Run("listening", listener_, kLow);
    for (const char* name : {"unheardof", "another"}) {
        programs_.resize(1);
        Run(name, client_, kHigh);
        EXPECT_EQ(Find(), Found{1}) << name;
    }
}

TEST_F(SocketHolders, AreLookedForEverywhereOnceAMinuteWhereThereAreNone) {
    Add(client_);
    Run("unheardof", listener_, kLow);
    for (const bool looks : {true, false, false}) {
        EXPECT_EQ(Find(), Found());
        EXPECT_EQ(HasLookedEverywhere(), looks);
    }
    now_ += SearchMemory::kMaxAge;
    Run("unheardof", client_, kHigh);
    EXPECT_EQ(Find(), Found());
    now_ += std::chrono::seconds(1);
    EXPECT_EQ(Find(), Found{1});
}

TEST_F(SocketHolders, AreLookedForEverywhereForEachNewClientOfAListenerThatSomebodyHolds) {
    for (int client = 0; client < 2; ++client) {
        const Socket socket;
        Add(socket);
        if (client == 0) {
            Run("unheardof", listener_, kHigh);
        }
        EXPECT_EQ(Find(), Found());
        EXPECT_TRUE(HasLookedEverywhere()) << client;
    }
}

TEST_F(SocketHolders, AreNotLookedForAgainForClientsOfAListenerThatNobodyHolds) {
    Add(client_);
    Run("unheardof", Socket(), kLow);
    EXPECT_EQ(Find(), Found());
    EXPECT_TRUE(HasLookedEverywhere());
    const Socket next;
    Add(next);
    EXPECT_EQ(Find(), Found());
    EXPECT_FALSE(HasLookedEverywhere());
    const Socket ofAnother;
    const Socket listener;
    Add(ofAnother, SocketRole::kServed, kPort + 1);
    Add(listener, SocketRole::kListener, kPort + 1);
    EXPECT_EQ(Find(), Found());
    EXPECT_TRUE(HasLookedEverywhere());
}

TEST_F(SocketHolders, AreNotLookedForEverywhereForClientsOfTheKernelsOwnNfsServer) {
    SKIP_WITHOUT_MOUNTS();
    Add(client_);
    Run("unheardof", listener_, kHigh);
    InPrivateRoot([this] {
        ASSERT_EQ(mount("tmpfs", "/proc/fs", "tmpfs", 0, ""), 0);
        WriteFile("/proc/fs/nfsd/portlist", "udp 2000\ntcp 2000\n");
        for (const bool looks : {false, true}) {
            EXPECT_EQ(Find(), Found());
            EXPECT_EQ(HasLookedEverywhere(), looks);
            WriteFile("/proc/fs/nfsd/portlist", "tcp 2049\n");
        }
    });
}

TEST_F(SocketHolders, AreNotLookedForEverywhereForWhatAnSshServerForwards) {
    const Socket forwarded;
    Add(client_);
    Add(forwarded);
    const std::string program = MakeServer(folder_, "sshd");
    Run("unheardof", listener_, kLow);
    for (const int descriptor : {kLow, kHigh}) {
        const Child server([&] {
            dup2(forwarded.Get(), kHigh + 1);
            BecomeServer(program, client_.Get(), descriptor);
        });
        for (int time = 0; time < 2; ++time) {
            const auto holders = FindSocketHolders(
                {server.Pid(), programs_.front()->Pid()}, sockets_, [this] { return sockets_; },
                memory_);
            ASSERT_EQ(holders.size(), 1U);
            EXPECT_EQ(holders.front().inodes, std::vector{client_.Inode()});
            EXPECT_TRUE(memory_.Facts()->sockets.empty()) << "it was looked for everywhere";
        }
    }
}

}  // namespace
