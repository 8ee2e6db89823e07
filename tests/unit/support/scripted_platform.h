// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_SCRIPTED_PLATFORM_H
#define VORN_TESTS_UNIT_SUPPORT_SCRIPTED_PLATFORM_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/process.h"
#include "vorn/platform/share.h"
#include "vorn/platform/volume.h"

namespace unit {

/**
 * The platform as a script: every operation of platform/include, supplied by the test program
 * itself. A test fills the members below and calls the library; what is not filled in is empty
 * (no shares, no connections) or fails (no such directory, no such process).
 *
 * An operation that fails sets the platform's error code to its constant below, so that a log
 * line shows whose code it quotes. These do not count as codes that the library set.
 *
 * Every operation goes into the journal with its arguments. Lists show as `list 1`, `list 2` in
 * the order of their allocation. A list moves whenever something may move it, and the record of a
 * share is overwritten by the next look-up: who keeps an old pointer gets caught.
 */
struct ScriptedPlatform {
    static constexpr int kAllocError = 0x0A01;
    static constexpr int kPushError = 0x0A02;
    static constexpr int kEnumDirError = 0x0A03;
    static constexpr int kShareEnumError = 0x0A04;
    static constexpr int kShareGetError = 0x0A05;
    static constexpr int kVolumeError = 0x0A06;
    static constexpr int kHiddenError = 0x0A07;
    static constexpr int kConnectionError = 0x0A08;
    static constexpr int kProcessError = 0x0A09;
    static constexpr int kSectionError = 0x0A0A;
    static constexpr int kCheckDirError = 0x0A0B;

    struct Share {
        std::string name;
        std::string path;
    };
    struct Connection {
        uint32_t pid;
        std::string host;
        std::string user;
        uint32_t type;
    };
    struct Process {
        int ppid = 0;
        int result = 0;
        bool givesRecord = true; /**< may be true with a negative result, false with 0 */
    };
    struct ErrorSet {
        int code;
        std::string source;
        int line;
    };

    // Lists: the calls, counted from 1, that fail.
    std::set<int> failingAllocs;
    std::set<int> failingPushes;

    /** Operations that fill a list and, though they succeed, leave none behind. */
    std::set<std::string> listDroppers;

    /** Names by path. A path that isn't here can't be listed. */
    std::map<std::string, std::vector<std::string>> directories;
    /** Names that a failing listing leaves in the list all the same. */
    std::map<std::string, std::vector<std::string>> partialDirectories;

    std::vector<Share> shares;
    std::optional<int> shareEnumResult; /**< instead of the number of shares */
    std::set<std::string> failingShares;

    std::vector<std::string> volumes; /**< none: the enumeration gives null */

    std::vector<std::string> hiddenDirectories;
    int hiddenResult = 0;

    std::map<std::string, int> directoryChecks; /**< result by path; 0 where not given */

    /** Value by (path, section, key). */
    std::map<std::tuple<std::string, std::string, std::string>, std::string> sectionValues;
    int sectionResult = 0; /**< returned with a value; any but 0 says that there is none */
    /** Text by bundle and key; nothing stands for a null text. */
    std::map<std::string, std::map<std::string, std::optional<std::string>>> bundles;

    std::vector<Connection> connections;
    /** Instead of the number of connections; negative: no block is handed out. */
    std::optional<int> connectionResult;

    std::map<int, Process> processes;

    // What came of it.
    std::vector<ErrorSet> errorSets; /**< by the library; each to be asked for by a test */
    /** Lists, processes, bundles and connection blocks that are still alive. */
    std::vector<std::string> LiveObjects() const;

    // Working state of the operations.
    int allocCalls = 0;
    int pushCalls = 0;
    std::map<const void*, std::string> live;
    std::vector<VORN_MOUNT_VOL_INFO> volumeChain;
    int sharesGiven = 0; /**< also the result of a look-up: any that isn't negative is success */
    VORN_SHARE shareRecord = {};
    std::string sharePath;
};

/** The platform of the running test. */
ScriptedPlatform& ThePlatform();

/** Starts over, with the error code 0. */
void ResetPlatform();

/** Sets the error code as a platform operation would, not counted as set by the library. */
void SetPlatformError(int code);

}  // namespace unit

#endif
