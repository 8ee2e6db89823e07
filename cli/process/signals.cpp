#include "cli/process/signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace cli {

Signals::Signals(std::initializer_list<int> numbers) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers) {
        sigaddset(&set, number);
    }
    sigprocmask(SIG_BLOCK, &set, nullptr);
    fd_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

Signals::~Signals() {
    close(fd_);
}

int Signals::Next() const {
    struct signalfd_siginfo info {};
    return read(fd_, &info, sizeof(info)) == sizeof(info) ? static_cast<int>(info.ssi_signo) : 0;
}

}  // namespace cli
