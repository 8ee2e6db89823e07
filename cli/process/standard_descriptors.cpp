// SPDX-License-Identifier: MIT
#include "cli/process/standard_descriptors.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/failure.h"
#include "support/descriptor.h"

namespace cli {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw Failure(fmt::format("can't {} /dev/null: {}", what, std::strerror(errno)));
}

}  // namespace

void OpenStandardDescriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) < 0 &&
            open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) {
            Fail("open");
        }
    }
}

void DropStandardDescriptors(std::initializer_list<int> fds) {
    const support::Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!null) {
        Fail("open");
    }
    for (const int fd : fds) {
        if (dup2(null.Get(), fd) < 0) {
            Fail("write to");
        }
    }
}

}  // namespace cli
