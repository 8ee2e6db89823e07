// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_SCRIPTED_LIBC_H
#define VORN_TESTS_UNIT_SUPPORT_SCRIPTED_LIBC_H

#include <sys/types.h>

#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace unit {

/** A line of the system log as the library wrote it. */
struct LogLine {
    int priority;
    std::string format;
    std::string text;
    int error; /**< errno at the call; the call itself changes errno */
};

/**
 * The C library's calls that the library makes, defined by the test program and so seen from
 * every library that it loads. They go into the journal and, where a test scripts nothing, on to
 * the real function. Three places are never the real host's while a test runs: /proc/<pid>/fd/
 * (readlink), /proc/<pid>/cgroup (open, fopen) and the two unit directories (access): there,
 * what is not scripted does not exist.
 *
 * Journalled: readlink(path, size), stat(path), access(path, mode), tzset(), strftime(size,
 * format), open(path) for control-group files however they are opened, geteuid(), getegid(),
 * setresuid(r, e, s), setresgid(r, e, s). The system log is kept in logLines.
 */
struct ScriptedLibc {
    struct Status {
        int error = 0; /**< errno of a failure */
        time_t accessTime = 0;
    };
    /** Identities that exist in the script alone; no call reaches the kernel. */
    struct Identities {
        uid_t user;
        gid_t group;
        /** Number, from 1, of the setresuid and setresgid calls that fail, and their errno. */
        std::map<int, int> failures;
        int calls = 0;
    };

    bool active = false; /**< a test is running */

    std::vector<LogLine> logLines;

    std::map<std::string, std::string> links; /**< target by path of the link */
    std::map<std::string, Status> statuses;
    std::set<std::string> unitFiles; /**< full paths that access() finds in the unit directories */
    std::map<std::string, std::string> controlGroups; /**< text of /proc/<pid>/cgroup by pid text */
    std::set<int> failingTimeTexts;                   /**< strftime calls, from 1, that give 0 */
    int timeTextCalls = 0;
    std::optional<Identities> identities;
};

/** The C library of the running test. */
ScriptedLibc& TheLibc();

}  // namespace unit

#endif
