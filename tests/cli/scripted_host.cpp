// SPDX-License-Identifier: MIT
#include "tests/cli/scripted_host.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
#include "vorn/platform/hidden.h"
#include "vorn/platform/process.h"
#include "vorn/platform/share.h"

ScriptedHost scriptedHost;

namespace {

constexpr int kError = 0x1234;

int Fails(const char* operation) {
    ++scriptedHost.calls[operation];
    if (scriptedHost.failing.count(operation) == 0) {
        return 0;
    }
    KLIBCErrSetEx(kError, operation, 1);
    return -1;
}

int Push(const std::vector<std::string>& texts, KLIBC_SZLIST** list) {
    for (const std::string& text : texts) {
        KLIBCSzListPush(list, text.c_str());
    }
    return static_cast<int>(texts.size());
}

}  // namespace

int VORNShareEnum(KLIBC_SZLIST** names, int /*flags*/) {
    return Fails("VORNShareEnum") < 0 ? -1 : Push(scriptedHost.shares, names);
}

int VORNShareGet(const char* name, VORN_SHARE** share) {
    static VORN_SHARE record;
    const auto found =
        std::find(scriptedHost.shares.begin(), scriptedHost.shares.end(), std::string(name));
    record.szPath = found->c_str();
    *share = &record;
    return Fails("VORNShareGet");
}

int VORNEAHiddenDirGet(KLIBC_SZLIST** list) {
    return Fails("VORNEAHiddenDirGet") < 0 ? -1 : Push(scriptedHost.hidden, list);
}

int VORNCurConnGet(VORN_CURCONN** connections) {
    const auto& all = scriptedHost.connections;
    auto* block = static_cast<VORN_CURCONN*>(std::calloc(all.size() + 1, sizeof(VORN_CURCONN)));
    for (size_t i = 0; i < all.size(); ++i) {
        block[i].pid = all[i].pid;
        block[i].szHost = all[i].host.c_str();
        block[i].szUser = all[i].user.c_str();
        block[i].type = all[i].type;
    }
    *connections = block;
    return Fails("VORNCurConnGet") < 0 ? (std::free(block), -1) : static_cast<int>(all.size());
}

int KLIBCProcGetByPid(int pid, KLIBC_PROC** process) {
    const auto found = scriptedHost.parents.find(pid);
    if (found == scriptedHost.parents.end()) {
        return -1;
    }
    *process = static_cast<KLIBC_PROC*>(std::calloc(1, sizeof(KLIBC_PROC)));
    (*process)->ppid = found->second;
    return 0;
}

void KLIBCProcFree(KLIBC_PROC* process) {
    std::free(process);
}

/** No process in /proc: what records there are come from elsewhere. */
int KLIBCFileEnumDir(const char* path, const char* /*pattern*/, KLIBC_SZLIST** /*list*/,
                     int /*options*/) {
    return std::strcmp(path, "/proc") == 0 ? Fails("KLIBCFileEnumDir") : -1;
}

int KLIBCFileCheckDir(const char* path) {
    ++scriptedHost.calls["KLIBCFileCheckDir"];
    return scriptedHost.folders.count(path) != 0 ? 1 : 0;
}

/** The file of a unit names the service as the unit is called. */
int KLIBCFileGetSectionValue(const char* path, const char* /*section*/, const char* key,
                             char* buffer, int size) {
    const std::string unit = std::strrchr(path, '/') + 1;
    if (std::strcmp(key, "Name") != 0) {
        return -1;
    }
    std::strncpy(buffer, unit.substr(0, unit.rfind('.')).c_str(), static_cast<size_t>(size) - 1);
    return 0;
}
