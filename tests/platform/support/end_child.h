// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_END_CHILD_H
#define VORN_TESTS_PLATFORM_SUPPORT_END_CHILD_H

#include <unistd.h>

#include <cstdio>

#ifdef VORN_COVERAGE
extern "C" void __gcov_dump();
#endif

/** Ends a forked child; what it printed stays, and what it reached, in a build for coverage. */
[[noreturn]] inline void EndChild(int status) {
    std::fflush(nullptr);
#ifdef VORN_COVERAGE
    __gcov_dump();
#endif
    _exit(status);
}

#endif
