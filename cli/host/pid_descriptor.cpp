// SPDX-License-Identifier: MIT
#include "cli/host/pid_descriptor.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/failure.h"

namespace cli {
namespace {

// By number: the header of glibc 2.36 declares these as functions of C++.
int Call(long number, int argument, long second = 0) {
    return static_cast<int>(syscall(number, argument, second, 0, 0));
}

}  // namespace

PidDescriptor::PidDescriptor(pid_t pid) : descriptor_(Call(SYS_pidfd_open, pid)) {
    // EINVAL: the id has become that of a thread.
    if (!descriptor_ && errno != ESRCH && errno != EINVAL) {
        throw Failure(fmt::format("can't take hold of process {}: {}", pid, std::strerror(errno)));
    }
}

bool PidDescriptor::HasEnded() const {
    struct pollfd watched = {descriptor_.Get(), POLLIN, 0};
    return poll(&watched, 1, 0) > 0;
}

int PidDescriptor::Send(int signal) const {
    return Call(SYS_pidfd_send_signal, descriptor_.Get(), signal) == 0 ? 0 : errno;
}

support::Descriptor PidDescriptor::Copy(int number) const {
    return support::Descriptor(Call(SYS_pidfd_getfd, descriptor_.Get(), number));
}

}  // namespace cli
