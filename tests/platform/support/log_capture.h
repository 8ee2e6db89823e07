// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_LOG_CAPTURE_H
#define VORN_TESTS_PLATFORM_SUPPORT_LOG_CAPTURE_H

#include <string>
#include <vector>

/** What this process has sent to the system log; the tests' own syslog keeps it. */
std::vector<std::string>& LoggedLines();

#endif
