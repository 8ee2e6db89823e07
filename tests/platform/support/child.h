// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_CHILD_H
#define VORN_TESTS_PLATFORM_SUPPORT_CHILD_H

#include <sys/types.h>

#include <functional>

/** A child process that has run a body and then waits until this object dies. */
class Child {
public:
    /** Returns as soon as the body has run; a body that executes a program counts as having run. */
    explicit Child(const std::function<void()>& body);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Pid() const { return pid_; }

private:
    pid_t pid_ = -1;
};

#endif
