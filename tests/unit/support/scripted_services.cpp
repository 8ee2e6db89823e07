// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "tests/unit/support/failing_calls.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/journal.h"
#include "tests/unit/support/scripted_platform.h"
#include "vorn/platform/string_bundle.h"

namespace {

using unit::ScriptedPlatform;
using unit::ThePlatform;

size_t TextBytes(const std::vector<ScriptedPlatform::Connection>& connections) {
    size_t bytes = 0;
    for (const ScriptedPlatform::Connection& connection : connections) {
        bytes += connection.host.size() + connection.user.size() + 2;
    }
    return bytes;
}

char* Put(const std::string& text, char** room) {
    char* start = *room;
    std::memcpy(start, text.c_str(), text.size() + 1);
    *room += text.size() + 1;
    return start;
}

/** One block, the texts behind the records, as the interface demands. */
VORN_CURCONN* MakeBlock(const std::vector<ScriptedPlatform::Connection>& connections) {
    const size_t recordBytes = connections.size() * sizeof(VORN_CURCONN);
    void* block = std::calloc(1, recordBytes + TextBytes(connections));
    VORN_CURCONN* records = static_cast<VORN_CURCONN*>(block);
    char* room = static_cast<char*>(block) + recordBytes;
    for (size_t i = 0; i < connections.size(); ++i) {
        records[i].pid = connections[i].pid;
        records[i].szHost = Put(connections[i].host, &room);
        records[i].szUser = Put(connections[i].user, &room);
        records[i].type = connections[i].type;
    }
    return records;
}

}  // namespace

extern "C" {

/** Only there in a program that is linked so that it sees what the library frees. */
void __wrap_free(void* block) __attribute__((weak));

int VORNCurConnGet(VORN_CURCONN** connections) {
    const unit::FailingNewPause pause;
    unit::Note("VORNCurConnGet", *connections == nullptr ? "null" : "set");
    const auto& scripted = ThePlatform().connections;
    const int result = ThePlatform().connectionResult.value_or(static_cast<int>(scripted.size()));
    if (unit::Fails("VORNCurConnGet") || result < 0) {
        unit::SetPlatformError(ScriptedPlatform::kConnectionError);
        return std::min(result, -1);
    }
    if (!scripted.empty()) {
        *connections = MakeBlock(scripted);
        if (__wrap_free != nullptr) {
            ThePlatform().live[*connections] = "connection block";
        }
    }
    return result;
}

int KLIBCProcGetByPid(int pid, KLIBC_PROC** process) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCProcGetByPid", pid, *process == nullptr ? "null" : "set");
    const auto scripted = ThePlatform().processes.find(pid);
    if (unit::Fails("KLIBCProcGetByPid") || scripted == ThePlatform().processes.end()) {
        unit::SetPlatformError(ScriptedPlatform::kProcessError);
        return -1;
    }
    if (scripted->second.givesRecord) {
        *process = new KLIBC_PROC{pid, scripted->second.ppid};
        ThePlatform().live[*process] = "process " + std::to_string(pid);
    }
    return scripted->second.result;
}

void KLIBCProcFree(KLIBC_PROC* process) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCProcFree", process == nullptr ? "null" : std::to_string(process->reserved));
    if (process == nullptr) {
        return;
    }
    if (ThePlatform().live.erase(process) == 0) {
        ADD_FAILURE() << "KLIBCProcFree of a process that is not alive";
        return;
    }
    delete process;
}

}  // extern "C"

StringBundle::StringBundle(const char* bundle, const char* b, const char* c, const char* d,
                           const char* e, const char* f)
    : state_(nullptr) {
    const unit::FailingNewPause pause;
    state_ = new std::string(bundle);
    unit::Note("StringBundle", bundle, b, c, d, e, f);
    ThePlatform().live[state_] = "bundle " + std::string(bundle);
}

StringBundle::~StringBundle() {
    const unit::FailingNewPause pause;
    std::string* name = static_cast<std::string*>(state_);
    unit::Note("~StringBundle", *name);
    ThePlatform().live.erase(state_);
    delete name;
}

const char* StringBundle::Text(const char* key, const char* fallback) {
    const unit::FailingNewPause pause;
    const std::string& name = *static_cast<std::string*>(state_);
    unit::Note("StringBundle::Text", name, key, fallback);
    if (unit::Fails("StringBundle::Text")) {
        return nullptr;
    }
    const auto bundle = ThePlatform().bundles.find(name);
    if (bundle == ThePlatform().bundles.end()) {
        return fallback;
    }
    const auto text = bundle->second.find(key);
    if (text == bundle->second.end()) {
        return fallback;
    }
    return text->second.has_value() ? text->second->c_str() : nullptr;
}
