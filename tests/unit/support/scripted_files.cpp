// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "tests/unit/support/failing_calls.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/journal.h"
#include "tests/unit/support/real_function.h"
#include "tests/unit/support/scripted_libc.h"

namespace {

using unit::Real;
using unit::TheLibc;

bool IsBelow(const std::string& path, const std::string& directory) {
    return path.compare(0, directory.size(), directory) == 0;
}

bool IsUnitFile(const std::string& path) {
    return IsBelow(path, "/usr/local/lib/systemd/system/") ||
           IsBelow(path, "/usr/lib/systemd/system/");
}

/** The part of "/proc/<pid>/..." between the slashes; nothing for /proc/self. */
std::string PidOf(const std::string& path) {
    if (!IsBelow(path, "/proc/")) {
        return "";
    }
    const std::string pid = path.substr(6, path.find('/', 6) - 6);
    return pid == "self" || pid == "thread-self" ? "" : pid;
}

bool IsControlGroup(const std::string& path) {
    return TheLibc().active && !PidOf(path).empty() && path == "/proc/" + PidOf(path) + "/cgroup";
}

/** The control-group file that was opened last. */
int controlGroupFile = -1;

int OpenControlGroup(const std::string& path) {
    unit::Note("open", path);
    if (unit::Fails("open")) {
        errno = EIO;
        return -1;
    }
    const auto text = TheLibc().controlGroups.find(PidOf(path));
    if (text == TheLibc().controlGroups.end()) {
        errno = ENOENT;
        return -1;
    }
    const int descriptor = memfd_create("cgroup", MFD_CLOEXEC);
    if (write(descriptor, text->second.data(), text->second.size()) < 0) {
        return -1;
    }
    lseek(descriptor, 0, SEEK_SET);
    return controlGroupFile = descriptor;
}

int OpenAny(const char* name, const char* path, int flags, mode_t mode) {
    const unit::FailingNewPause pause;
    if (IsControlGroup(path)) {
        return OpenControlGroup(path);
    }
    return Real(static_cast<int (*)(const char*, int, ...)>(nullptr), name)(path, flags, mode);
}

FILE* OpenStream(const char* name, const char* path, const char* mode) {
    const unit::FailingNewPause pause;
    if (IsControlGroup(path)) {
        const int descriptor = OpenControlGroup(path);
        return descriptor < 0 ? nullptr : fdopen(descriptor, mode);
    }
    return Real(static_cast<FILE* (*)(const char*, const char*)>(nullptr), name)(path, mode);
}

template <typename Status>
int StatusOf(const char* name, const char* path, Status* status) {
    const unit::FailingNewPause pause;
    if (TheLibc().active) {
        unit::Note("stat", path);
        if (unit::Fails("stat")) {
            errno = EIO;
            return -1;
        }
        const auto scripted = TheLibc().statuses.find(path);
        if (scripted != TheLibc().statuses.end()) {
            std::memset(status, 0, sizeof(*status));
            status->st_atim.tv_sec = scripted->second.accessTime;
            errno = scripted->second.error;
            return scripted->second.error == 0 ? 0 : -1;
        }
    }
    return Real(static_cast<int (*)(const char*, Status*)>(nullptr), name)(path, status);
}

mode_t ModeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

}  // namespace

extern "C" {

ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
    const unit::FailingNewPause pause;
    if (!TheLibc().active || PidOf(path).empty()) {
        return Real(&readlink, "readlink")(path, buffer, size);
    }
    unit::Note("readlink", path, size);
    EXPECT_EQ(static_cast<size_t>(std::count(buffer, buffer + size, '\0')), size)
        << "readlink was given a buffer that is not all zero";
    const auto link = TheLibc().links.find(path);
    if (unit::Fails("readlink") || link == TheLibc().links.end()) {
        errno = EIO;
        return -1;
    }
    return static_cast<ssize_t>(link->second.copy(buffer, size));
}

ssize_t read(int file, void* buffer, size_t size) {
    if (TheLibc().active && file == controlGroupFile && unit::Fails("read")) {
        errno = EIO;
        return -1;
    }
    return Real(&read, "read")(file, buffer, size);
}

int close(int file) {
    const unit::FailingNewPause pause;
    const bool isControlGroup = TheLibc().active && file == controlGroupFile;
    const int result = Real(&close, "close")(file);
    if (!isControlGroup) {
        return result;
    }
    controlGroupFile = -1;
    if (unit::Fails("close")) {
        errno = EIO;  // the descriptor is gone all the same
        return -1;
    }
    return result;
}

int stat(const char* path, struct stat* status) noexcept {
    return StatusOf("stat", path, status);
}

int stat64(const char* path, struct stat64* status) noexcept {
    return StatusOf("stat64", path, status);
}

int access(const char* path, int mode) noexcept {
    const unit::FailingNewPause pause;
    if (!TheLibc().active || !IsUnitFile(path)) {
        return Real(&access, "access")(path, mode);
    }
    unit::Note("access", path, mode);
    errno = ENOENT;
    return !unit::Fails("access") && TheLibc().unitFiles.count(path) != 0 ? 0 : -1;
}

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenAny("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenAny("open64", path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) {
    return OpenStream("fopen", path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    return OpenStream("fopen64", path, mode);
}

}  // extern "C"
