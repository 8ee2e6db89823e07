// SPDX-License-Identifier: MIT
#include "tests/faults/kept_log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "tests/support/syslog_interposer.h"

namespace {

char kept[1 << 16];
size_t used = 0;

void Append(int written) {
    // One byte stays for the zero at the end.
    used += std::min(static_cast<size_t>(std::max(written, 0)), sizeof(kept) - 1 - used);
}

}  // namespace

void TakeLogLine(int priority, const char* format, va_list arguments) {
    const int error = errno;
    va_list again;
    va_copy(again, arguments);
    Append(std::snprintf(kept + used, sizeof(kept) - used, "<%d> ", priority));
    errno = error;  // for %m
    Append(std::vsnprintf(kept + used, sizeof(kept) - used, format, again));
    Append(std::snprintf(kept + used, sizeof(kept) - used, "\n"));
    va_end(again);
    errno = error;
    RealVsyslog(priority, format, arguments);  // its allocations are part of what fails
}

namespace faults {

std::string KeptLog() {
    return {kept, used};
}

void ForgetLog() {
    used = 0;
}

}  // namespace faults
