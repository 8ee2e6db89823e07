#include "tests/platform/support/log_capture.h"

#include <cstdarg>
#include <cstdio>

std::vector<std::string>& LoggedLines() {
    static std::vector<std::string> lines;
    return lines;
}

namespace {

void Keep(const char* format, va_list arguments) {
    char line[4096];
    vsnprintf(line, sizeof(line), format, arguments);
    LoggedLines().emplace_back(line);
}

}  // namespace

// Both names: which one a call becomes depends on _FORTIFY_SOURCE.
extern "C" void syslog(int /*priority*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Keep(format, arguments);
    va_end(arguments);
}

extern "C" void __syslog_chk(int /*priority*/, int /*flag*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Keep(format, arguments);
    va_end(arguments);
}
