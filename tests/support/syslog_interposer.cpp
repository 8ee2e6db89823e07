// SPDX-License-Identifier: MIT
#include "tests/support/syslog_interposer.h"

#include <dlfcn.h>
#include <syslog.h>

namespace {

const auto realVsyslog = reinterpret_cast<decltype(&vsyslog)>(dlsym(RTLD_NEXT, "vsyslog"));

}  // namespace

void RealVsyslog(int priority, const char* format, va_list arguments) {
    realVsyslog(priority, format, arguments);
}

extern "C" {

// Compilers that fortify replace syslog by the _chk forms.
void __syslog_chk(int priority, int flag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
void __vsyslog_chk(int priority, int flag, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    TakeLogLine(priority, format, arguments);
    va_end(arguments);
}

void vsyslog(int priority, const char* format, va_list arguments) {
    TakeLogLine(priority, format, arguments);
}

void __syslog_chk(int priority, int /*flag*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    TakeLogLine(priority, format, arguments);
    va_end(arguments);
}

void __vsyslog_chk(int priority, int /*flag*/, const char* format, va_list arguments) {
    TakeLogLine(priority, format, arguments);
}

}  // extern "C"
