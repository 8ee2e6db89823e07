// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_SUPPORT_SYSLOG_INTERPOSER_H
#define VORN_TESTS_SUPPORT_SYSLOG_INTERPOSER_H

#include <cstdarg>

/**
 * Gets what this process sends to the system log, in place of the C library. Each program that
 * links the interposer defines it. errno is still the caller's, for %m.
 */
void TakeLogLine(int priority, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

/** The C library's own vsyslog, found when the program starts: allocates nothing to be found. */
void RealVsyslog(int priority, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

#endif
