// SPDX-License-Identifier: MIT
#include "tests/platform/support/scripted_calls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <poll.h>
#include <sched.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <utility>

ScriptedCalls& Calls() {
    static ScriptedCalls calls;
    return calls;
}

namespace {

template <typename Function>
Function* Real(Function* /*interposed*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void HideTypes(char* buffer, ssize_t size) {
    for (ssize_t at = 0; at < size;) {
        auto& entry = *reinterpret_cast<dirent64*>(buffer + at);
        entry.d_type = DT_UNKNOWN;
        at += entry.d_reclen;
    }
}

}  // namespace

extern "C" ssize_t getdents64(int fd, void* buffer, size_t size) {
    static const auto real = Real(&getdents64, "getdents64");
    auto& script = Calls().getdents64;
    ++script.calls;
    if (script.failFrom != 0 && script.calls >= script.failFrom) {
        errno = script.error;
        return -1;
    }
    const ssize_t got = real(fd, buffer, size);
    if (script.hideTypes) {
        HideTypes(static_cast<char*>(buffer), got);
    }
    return got;
}

extern "C" int poll(pollfd* waited, nfds_t count, int timeout) {
    static const auto real = Real(&poll, "poll");
    ++Calls().poll.calls;
    if (const int error = std::exchange(Calls().poll.error, 0); error != 0) {
        errno = error;
        return -1;
    }
    return real(waited, count, timeout);
}

extern "C" int clone(int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept {
    static const auto real = Real(&clone, "clone");
    va_list arguments;
    va_start(arguments, argument);
    pid_t* const parentTid = va_arg(arguments, pid_t*);
    va_end(arguments);
    const auto& script = Calls().clone;
    if ((flags & script.refusedFlag) == 0) {
        return real(run, stack, flags, argument, parentTid);
    }
    if (script.error != 0) {
        errno = script.error;
        return -1;
    }
    return real(run, stack, flags & ~script.refusedFlag, argument);
}
