// SPDX-License-Identifier: MIT
#include "tests/platform/support/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

Child::Child(const std::function<void()>& body) {
    // Closed when the body has run, or on execution of a program.
    int running[2];
    if (pipe2(running, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "pipe2";
        return;
    }
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(running[0]);
        body();
        close(running[1]);
        for (;;) {
            pause();
        }
    }
    close(running[1]);
    char byte;
    EXPECT_EQ(read(running[0], &byte, 1), 0);
    close(running[0]);
}

Child::~Child() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}
