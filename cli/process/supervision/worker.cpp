// SPDX-License-Identifier: MIT
#include "cli/process/supervision/worker.h"

#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "cli/failure.h"
#include "cli/process/supervision/gate_protocol.h"

namespace cli {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw Failure(
        fmt::format("can't start a process for the work: {}: {}", what, std::strerror(errno)));
}

[[noreturn]] void RunWork(int socket, pid_t supervisor, const std::function<int(Gate&)>& work) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != supervisor) {
        _exit(kGateLost);
    }
    Gate gate(socket);
    std::exit(work(gate));
}

}  // namespace

Worker::Worker(const std::function<int(Gate&)>& work) {
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) {
        Fail("socketpair");
    }
    socket_ = support::Descriptor(sockets[0]);
    const support::Descriptor theirs(sockets[1]);
    const pid_t supervisor = getpid();
    pid_ = fork();
    if (pid_ < 0) {
        Fail("fork");
    }
    if (pid_ == 0) {
        socket_.Reset();
        RunWork(theirs.Get(), supervisor, work);
    }
}

Worker::~Worker() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, WNOHANG);
    }
}

void Worker::Send(int signal) const {
    if (pid_ > 0) {
        kill(pid_, signal);
    }
}

int Worker::Wait() {
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace cli
