// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdio>

#include "tests/support/syslog_interposer.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/scripted_libc.h"

void TakeLogLine(int priority, const char* format, va_list arguments) {
    const int error = errno;
    const unit::FailingNewPause pause;
    char text[16384];
    std::vsnprintf(text, sizeof(text), format, arguments);  // %m is errno, still untouched
    unit::TheLibc().logLines.push_back({priority, format, text, error});
    errno = ENOTCONN;  // as the real one does where no log listens
}
