// SPDX-License-Identifier: MIT
#include "cli/process/signals.h"

#include <fmt/format.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/failure.h"

namespace cli {

Signals::Signals(std::initializer_list<int> numbers) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers) {
        sigaddset(&set, number);
    }
    fd_ = support::Descriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!fd_) {
        throw Failure(fmt::format("can't wait for signals: {}", std::strerror(errno)));
    }
    sigprocmask(SIG_BLOCK, &set, &before_);
}

Signals::~Signals() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

int Signals::Next() const {
    struct signalfd_siginfo info {};
    return read(fd_.Get(), &info, sizeof(info)) == sizeof(info) ? static_cast<int>(info.ssi_signo)
                                                                : 0;
}

}  // namespace cli
