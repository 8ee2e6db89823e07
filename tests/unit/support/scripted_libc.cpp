// SPDX-License-Identifier: MIT
#include "tests/unit/support/scripted_libc.h"

#include <unistd.h>

#include <cerrno>

#include "tests/unit/support/failing_calls.h"
#include "tests/unit/support/journal.h"
#include "tests/unit/support/real_function.h"

namespace unit {

ScriptedLibc& TheLibc() {
    static ScriptedLibc& libc = *new ScriptedLibc;  // outlives every static object
    return libc;
}

}  // namespace unit

namespace {

using unit::Real;
using unit::TheLibc;

template <typename Id>
int Change(Id effective, Id& current) {
    auto& identities = *TheLibc().identities;
    const auto failure = identities.failures.find(++identities.calls);
    if (failure != identities.failures.end()) {
        errno = failure->second;
        return -1;
    }
    current = effective == static_cast<Id>(-1) ? current : effective;
    return 0;
}

/** Ids as a caller writes them: -1 for one that stays. */
template <typename Id>
void NoteChange(const char* function, Id real, Id effective, Id saved) {
    unit::Note(function, static_cast<int>(real), static_cast<int>(effective),
               static_cast<int>(saved));
}

}  // namespace

extern "C" {

uid_t geteuid() noexcept {
    if (!TheLibc().active) {
        return Real(&geteuid, "geteuid")();
    }
    unit::Note("geteuid");
    return TheLibc().identities ? TheLibc().identities->user : Real(&geteuid, "geteuid")();
}

gid_t getegid() noexcept {
    if (!TheLibc().active) {
        return Real(&getegid, "getegid")();
    }
    unit::Note("getegid");
    return TheLibc().identities ? TheLibc().identities->group : Real(&getegid, "getegid")();
}

int setresuid(uid_t real, uid_t effective, uid_t saved) noexcept {
    NoteChange("setresuid", real, effective, saved);
    if (!TheLibc().identities) {
        return Real(&setresuid, "setresuid")(real, effective, saved);
    }
    return Change(effective, TheLibc().identities->user);
}

int setresgid(gid_t real, gid_t effective, gid_t saved) noexcept {
    NoteChange("setresgid", real, effective, saved);
    if (!TheLibc().identities) {
        return Real(&setresgid, "setresgid")(real, effective, saved);
    }
    return Change(effective, TheLibc().identities->group);
}

void tzset() noexcept {
    if (TheLibc().active) {
        unit::Note("tzset");
    }
    Real(&tzset, "tzset")();
}

struct tm* localtime_r(const time_t* time, struct tm* fields) noexcept {
    if (TheLibc().active && unit::Fails("localtime_r")) {
        errno = EOVERFLOW;
        return nullptr;
    }
    return Real(&localtime_r, "localtime_r")(time, fields);
}

size_t strftime(char* buffer, size_t size, const char* format, const struct tm* fields) noexcept {
    if (TheLibc().active) {
        unit::Note("strftime", size, format);
        if (unit::Fails("strftime") ||
            TheLibc().failingTimeTexts.count(++TheLibc().timeTextCalls) != 0) {
            return 0;
        }
    }
    return Real(&strftime, "strftime")(buffer, size, format, fields);
}

}  // extern "C"
