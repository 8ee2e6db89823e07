#include "tests/faults/kept_log.h"

#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace {

char kept[1 << 16];
size_t used = 0;

void Append(int written) {
    // One byte stays for the zero at the end.
    used += std::min(static_cast<size_t>(std::max(written, 0)), sizeof(kept) - 1 - used);
}

void Keep(int priority, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

void Keep(int priority, const char* format, va_list arguments) {
    const int error = errno;
    va_list again;
    va_copy(again, arguments);
    Append(std::snprintf(kept + used, sizeof(kept) - used, "<%d> ", priority));
    errno = error;  // for %m
    Append(std::vsnprintf(kept + used, sizeof(kept) - used, format, again));
    Append(std::snprintf(kept + used, sizeof(kept) - used, "\n"));
    va_end(again);
    errno = error;
    vsyslog(priority, format, arguments);  // its allocations are part of what fails
}

}  // namespace

namespace faults {

std::string KeptLog() {
    return {kept, used};
}

void ForgetLog() {
    used = 0;
}

}  // namespace faults

extern "C" {

// Both names: which one a call becomes depends on _FORTIFY_SOURCE.
void __syslog_chk(int priority, int flag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Keep(priority, format, arguments);
    va_end(arguments);
}

void __syslog_chk(int priority, int /*flag*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Keep(priority, format, arguments);
    va_end(arguments);
}

}  // extern "C"
