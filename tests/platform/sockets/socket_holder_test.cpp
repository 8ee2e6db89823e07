#include "platform/linux/sockets/socket_holder.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/support/host_error.h"
#include "support/descriptor.h"
#include "tests/platform/support/child.h"
#include "tests/platform/support/scripted_calls.h"
#include "tests/platform/support/serving.h"

namespace {

using namespace vornplatform;

/** A server known by its name whose client's socket is found in the whole table alone. */
class SocketHolders : public testing::Test {
protected:
    SocketHolders() {
        struct stat info {};
        EXPECT_EQ(fstat(socket_.Get(), &info), 0);
        wanted_.emplace(info.st_ino, ClientSocket{SocketRole::kServed, "192.0.2.9"});
    }
    std::size_t Count() { return FindSocketHolders({server_.Pid()}, wanted_).size(); }

    CallScript script_;
    TempFolder folder_;
    std::string program_ = MakeServer(folder_, "rsync");
    support::Descriptor socket_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    Child server_{[this] { BecomeServer(program_, socket_.Get(), 200); }};
    ClientSockets wanted_;
};

TEST_F(SocketHolders, AreFoundInTheWholeTable) {
    EXPECT_EQ(Count(), 1U);
}

TEST_F(SocketHolders, AreNoneWhereTheProcessGoesMeanwhile) {
    for (const int error : {ENOENT, ESRCH}) {
        Calls() = {};
        Calls().getdents64.failFrom = 1;
        Calls().getdents64.error = error;
        EXPECT_EQ(Count(), 0U) << error;
    }
}

TEST_F(SocketHolders, FailWhereTheTableCannotBeReadToItsEnd) {
    Calls().getdents64.failFrom = 1;
    Calls().getdents64.error = EIO;
    EXPECT_THROW(Count(), HostError);
}

}  // namespace
