#include <syslog.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/scripted_libc.h"

namespace {

void Keep(int priority, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

void Keep(int priority, const char* format, va_list arguments) {
    const int error = errno;
    const unit::FailingNewPause pause;
    char text[16384];
    std::vsnprintf(text, sizeof(text), format, arguments);  // %m is errno, still untouched
    unit::TheLibc().logLines.push_back({priority, format, text, error});
    errno = ENOTCONN;  // as the real one does where no log listens
}

}  // namespace

extern "C" {

// Compilers that fortify replace syslog by the _chk forms.
void __syslog_chk(int priority, int flag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
void __vsyslog_chk(int priority, int flag, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Keep(priority, format, arguments);
    va_end(arguments);
}

void vsyslog(int priority, const char* format, va_list arguments) {
    Keep(priority, format, arguments);
}

void __syslog_chk(int priority, int /*flag*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Keep(priority, format, arguments);
    va_end(arguments);
}

void __vsyslog_chk(int priority, int /*flag*/, const char* format, va_list arguments) {
    Keep(priority, format, arguments);
}

}  // extern "C"
