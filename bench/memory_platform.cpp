// SPDX-License-Identifier: MIT
#include "bench/memory_platform.h"

#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
#include "vorn/platform/hidden.h"
#include "vorn/platform/process.h"
#include "vorn/platform/share.h"
#include "vorn/platform/string_bundle.h"
#include "vorn/platform/volume.h"

MemoryPlatform& Platform() {
    static MemoryPlatform platform;
    return platform;
}

namespace {

constexpr int kControlGroupFile = 1 << 20;
constexpr char kControlGroup[] =
    "12:pids:/sshd.slice/ssh.service\n11:memory:/sshd.slice/ssh.service\n"
    "1:name=systemd:/sshd.slice/ssh.service\n0::/sshd.slice/ssh.service\n";

struct List {
    KLIBC_SZLIST head;
    std::vector<std::string> texts;
};

List* Of(KLIBC_SZLIST* list) {
    return reinterpret_cast<List*>(list);
}

void Push(KLIBC_SZLIST* list, std::string text) {
    Of(list)->texts.push_back(std::move(text));
    list->nItem = static_cast<int>(Of(list)->texts.size());
}

bool IsControlGroup(const char* path) {
    return strncmp(path, "/proc/", 6) == 0 && strstr(path, "/cgroup") != nullptr;
}

}  // namespace

void KLIBCErrSetEx(int, const char*, int) {}
int KLIBCErrGet(void) {
    return 0;
}

KLIBC_SZLIST* KLIBCSzListAlloc(int) {
    return &(new List{})->head;
}
int KLIBCSzListPush(KLIBC_SZLIST** list, const char* text) {
    Push(*list, text);
    return (*list)->nItem;
}
const char* KLIBCSzListGet(const KLIBC_SZLIST* list, int index) {
    return reinterpret_cast<const List*>(list)->texts[static_cast<size_t>(index)].c_str();
}
void KLIBCSzListRemoveAll(KLIBC_SZLIST* list) {
    Of(list)->texts.clear();
    list->nItem = 0;
}
void KLIBCSzListFree(KLIBC_SZLIST* list) {
    delete Of(list);
}

int KLIBCFileEnumDir(const char* path, const char*, KLIBC_SZLIST** list, int) {
    const bool processes = strcmp(path, "/proc") == 0;
    const int first = processes ? MemoryPlatform::kFirstPid : 1;
    const int count = processes ? Platform().processes : Platform().descriptors;
    for (int i = 0; i < count; ++i) {
        Push(*list, std::to_string(first + i));
    }
    return 0;
}
int KLIBCFileCheckDir(const char*) {
    return 0;
}
int KLIBCFileGetSectionValue(const char*, const char*, const char* key, char* buffer, int size) {
    if (!Platform().hasNames) {
        return -1;
    }
    snprintf(buffer, static_cast<size_t>(size), "%s",
             strcmp(key, "Name") == 0 ? "SSH" : "service:ssh");
    return 0;
}

int VORNShareEnum(KLIBC_SZLIST** names, int) {
    for (const std::string& share : Platform().shares) {
        Push(*names, share);
    }
    return (*names)->nItem;
}
int VORNShareGet(const char* name, VORN_SHARE** share) {
    static VORN_SHARE record;
    record.szPath = name;  // a share is named by its path here
    *share = &record;
    return 0;
}
VORN_MOUNT_VOL_INFO* VORNMountVolAllEnum(int, int, int) {
    static VORN_MOUNT_VOL_INFO volume = {{}, "/volume1", nullptr};
    return &volume;
}
void VORNMountVolInfoFree(VORN_MOUNT_VOL_INFO*) {}
int VORNEAHiddenDirGet(KLIBC_SZLIST** list) {
    for (const std::string& text : Platform().hidden) {
        Push(*list, text);
    }
    return 0;
}

int VORNCurConnGet(VORN_CURCONN** connections) {
    const int count = Platform().connections;
    *connections =
        static_cast<VORN_CURCONN*>(calloc(static_cast<size_t>(count) + 1, sizeof(VORN_CURCONN)));
    for (int i = 0; i < count; ++i) {
        VORN_CURCONN& connection = (*connections)[i];
        connection.pid = static_cast<uint32_t>(MemoryPlatform::kFirstPid + i);
        connection.szHost = "192.168.1.20";
        connection.szUser = "alice";
        connection.type = VORN_CURCONN_SSH;
    }
    return count;
}
int KLIBCProcGetByPid(int, KLIBC_PROC** process) {
    *process = static_cast<KLIBC_PROC*>(calloc(1, sizeof(KLIBC_PROC)));
    (*process)->ppid = 1;
    return 0;
}
void KLIBCProcFree(KLIBC_PROC* process) {
    free(process);
}

StringBundle::StringBundle(const char*, const char*, const char*, const char*, const char*,
                           const char*)
    : state_(nullptr) {}
StringBundle::~StringBundle() = default;
const char* StringBundle::Text(const char* key, const char*) {
    return key;
}

// The process table.

extern "C" {

ssize_t readlink(const char* path, char* buffer, size_t size) {
    const char* pid = path + strlen("/proc/");
    return snprintf(buffer, size, "/volume1/photo/p%.5s/document-%06d.dat", pid,
                    atoi(strrchr(path, '/') + 1));
}

int open(const char* path, int flags, ...) {
    if (IsControlGroup(path)) {
        return kControlGroupFile;
    }
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

ssize_t read(int file, void* buffer, size_t size) {
    if (file != kControlGroupFile) {
        return syscall(SYS_read, file, buffer, size);
    }
    memcpy(buffer, kControlGroup, sizeof(kControlGroup) - 1);
    return sizeof(kControlGroup) - 1;
}

int access(const char* path, int mode) {
    if (strncmp(path, "/usr/", 5) == 0) {
        return Platform().hasUnitFile ? 0 : -1;
    }
    return static_cast<int>(syscall(SYS_access, path, mode));
}

void syslog(int, const char*, ...) {}

}  // extern "C"
