// SPDX-License-Identifier: MIT
#include "tests/platform/support/log_capture.h"

#include <cstdio>

#include "tests/support/syslog_interposer.h"

std::vector<std::string>& LoggedLines() {
    static std::vector<std::string> lines;
    return lines;
}

void TakeLogLine(int /*priority*/, const char* format, va_list arguments) {
    char line[4096];
    vsnprintf(line, sizeof(line), format, arguments);
    LoggedLines().emplace_back(line);
}
