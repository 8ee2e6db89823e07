// SPDX-License-Identifier: MIT
#include "tests/platform/support/private_network.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tests/platform/support/end_child.h"

using support::Descriptor;

namespace {

constexpr int kFailed = 1;
constexpr int kNotPermitted = 77;

union SocketAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;

    socklen_t Size() const { return any.sa_family == AF_INET ? sizeof(ipv4) : sizeof(ipv6); }
};

SocketAddress ToSocketAddress(const char* text) {
    SocketAddress address;
    std::memset(&address, 0, sizeof(address));
    if (inet_pton(AF_INET, text, &address.ipv4.sin_addr) == 1) {
        address.any.sa_family = AF_INET;
        return address;
    }
    address.any.sa_family = AF_INET6;
    EXPECT_EQ(inet_pton(AF_INET6, text, &address.ipv6.sin6_addr), 1) << text;
    return address;
}

bool RaiseLoopback() {
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP;
    return ioctl(socket.Get(), SIOCSIFFLAGS, &request) == 0;
}

[[noreturn]] void RunInChild(const std::function<void()>& body) {
    if (unshare(CLONE_NEWNET) != 0) {
        _exit(errno == EPERM ? kNotPermitted : kFailed);
    }
    EXPECT_TRUE(RaiseLoopback());
    if (!testing::Test::HasFailure()) {
        body();
    }
    EndChild(testing::Test::HasFailure() ? kFailed : 0);
}

}  // namespace

void InPrivateNetwork(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        RunInChild(body);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotPermitted) {
        GTEST_SKIP() << "this user may not make a network namespace";
    }
    EXPECT_EQ(status, 0) << "in the private network";
}

Listener::Listener(const char* text) {
    SocketAddress address = ToSocketAddress(text);
    socklen_t size = address.Size();
    socket_ = Descriptor(socket(address.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(bind(socket_.Get(), &address.any, size), 0) << text;
    EXPECT_EQ(listen(socket_.Get(), 8), 0) << text;
    EXPECT_EQ(getsockname(socket_.Get(), &address.any, &size), 0) << text;
    port_ =
        ntohs(address.any.sa_family == AF_INET ? address.ipv4.sin_port : address.ipv6.sin6_port);
}

ServedClient::ServedClient(const Listener& listener, const char* text) {
    const SocketAddress from = ToSocketAddress(text);
    client_ = Descriptor(socket(from.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(bind(client_.Get(), &from.any, from.Size()), 0) << text;
    SocketAddress to = ToSocketAddress(from.any.sa_family == AF_INET ? "127.0.0.1" : "::1");
    (to.any.sa_family == AF_INET ? to.ipv4.sin_port : to.ipv6.sin6_port) = htons(listener.Port());
    EXPECT_EQ(connect(client_.Get(), &to.any, to.Size()), 0) << text;
    server_ = Descriptor(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    EXPECT_GE(server_.Get(), 0) << text;
}
