// SPDX-License-Identifier: MIT
#include <algorithm>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "tests/faults/fault_host.h"

/**
 * @file
 * Each call of the library that can fail fails alone, at its first, second and last occurrence,
 * and leaves exactly what the failure tables of the interface promise. A call that can fail and
 * has no line here fails the test. Which calls of the C library can fail is c-library-calls.txt's
 * to say, and that it names all that the library makes is a test of the built library.
 *
 * Identity calls have their whole table of failures in tests/unit/privilege_test.cpp; allocations
 * are allocation_faults_test.cpp's.
 */

namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using unit::Outcome;
using Rows = std::vector<std::string>;

// The list after each stage of an enumeration by share.
const Rows kNone;
const Rows kScanned = {"21 /volume1/photo/b", "21 /volume1/photo/@tmp/a", "22 /volume2/docs/dir",
                       "23 /volume3/music/c", "24 /volume3/music/d"};
const Rows kFiltered = {"21 /volume1/photo/b photo/b b", "21 /volume1/photo/@tmp/a photo/@tmp/a a",
                        "22 /volume2/docs/dir docs/dir dir", "23 /volume3/music/c music/c c",
                        "24 /volume3/music/d music/d d"};
const Rows kFilteredFirstServed = {
    "21 /volume1/photo/b photo/b b SMB", "21 /volume1/photo/@tmp/a photo/@tmp/a a SMB",
    "22 /volume2/docs/dir docs/dir dir", "23 /volume3/music/c music/c c",
    "24 /volume3/music/d music/d d"};
const Rows kServed = {"21 /volume1/photo/b photo/b b SMB",
                      "21 /volume1/photo/@tmp/a photo/@tmp/a a SMB",
                      "22 /volume2/docs/dir docs/dir dir SSH", "23 /volume3/music/c music/c c Ftp",
                      "24 /volume3/music/d music/d d SSH"};
const Rows kDone = {"22 /volume2/docs/dir docs/dir dir SSH 10.0.0.6 bob folder",
                    "23 /volume3/music/c music/c c Ftp - -",
                    "24 /volume3/music/d music/d d SSH - -",
                    "21 /volume1/photo/@tmp/a photo/@tmp/a a SMB 10.0.0.5 ann hidden",
                    "21 /volume1/photo/b photo/b b SMB 10.0.0.5 ann"};

// By volume the path is the full path.
const Rows kDoneByVolume = {
    "21 /volume1/photo/@tmp/a /volume1/photo/@tmp/a a SMB 10.0.0.5 ann hidden",
    "21 /volume1/photo/b /volume1/photo/b b SMB 10.0.0.5 ann",
    "22 /volume2/docs/dir /volume2/docs/dir dir SSH 10.0.0.6 bob folder",
    "23 /volume3/music/c /volume3/music/c c Ftp - -",
    "24 /volume3/music/d /volume3/music/d d SSH - -"};

const Rows kTimes = {"21 /volume1/photo/b 2024/03/07 13:05:09",
                     "22 /volume2/docs/dir 2024/03/07 13:05:09",
                     "24 /volume3/music/d 2024/03/07 13:05:09"};
const Rows kNoTimes = {"21 /volume1/photo/b", "22 /volume2/docs/dir", "24 /volume3/music/d"};

const Rows kKickable = {"SMB", "Ftp", "SSH"};
// Two of the kickable services have no unit file on this host.
const Rows kKickableLog = {
    "3 filehandle_get_kickable_service_list:47 Get kickable service list error. "
    "service:[atalk.slice]",
    "3 filehandle_get_kickable_service_list:47 Get kickable service list error. "
    "service:[inetd.slice]"};
const Rows kKickableErrors(4, "0x700 filehandle_get_service_name:98");

/** A good list but for some rows: from -> to, or -> "" for a row that is missing. */
Rows But(Rows rows, const std::vector<std::pair<std::string, std::string>>& changes) {
    for (const auto& [from, to] : changes) {
        const auto row = std::find(rows.begin(), rows.end(), from);
        EXPECT_NE(row, rows.end()) << from;
        if (to.empty()) {
            rows.erase(row);
        } else {
            *row = to;
        }
    }
    return rows;
}

/** Rows of an enumeration by volume, which shows full paths, from those by share. */
Rows ByVolume(Rows rows) {
    for (std::string& row : rows) {
        const size_t full = row.find(' ') + 1;
        const size_t path = row.find(' ', full) + 1;
        const std::string fullPath = row.substr(full, path - 1 - full);
        row.replace(path, row.find(' ', path) - path, fullPath);
    }
    return rows;
}

Rows WithoutFlags(Rows rows) {
    for (std::string& row : rows) {
        for (const char* flag : {" hidden", " folder"}) {
            row = row.substr(0, row.find(flag));
        }
    }
    return rows;
}

Rows Plus(Rows rows, const Rows& more) {
    rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

struct Case {
    const char* function; /**< public function, see FaultHost::Run */
    const char* call;
    int number;
    const char* result;
    Rows log;
    Rows list;
    Rows errors = {};
};

const std::string kScan = "3 filehandle_get_proc_opened_file:";
const std::string kFilter = "3 filehandle_filter_path:";
const Rows kScanFailed = {"3 filehandle_enum:24 Failed to get proc opened file for file handle"};
const Rows kFilterFailed = {"3 filehandle_enum:29 Failed to filter path for file handle"};
const Rows kConnectionFailed = {
    "3 filehandle_get_connnection_info:178 Failed to get current connection info",
    "3 filehandle_enum:39 Failed to update connection info for file handle"};
const Rows kLabelFailed = {"3 filehandle_enum:51 Failed to label hidden for file handle"};
const Rows kMissingUnit = {"0x700 filehandle_get_service_name:98"};

Rows SkippedProcess(const std::string& pid) {
    return {"7 filehandle_get_proc_opened_file:64 Fail to enum /proc/" + pid +
            "/fd/, vornerr=[0x0A03]"};
}
Rows NoShare(const std::string& name) {
    return Plus({kFilter + "82 Failed to get share path of share [" + name + "]",
                 kFilter + "139 Failed to get share path list, vornerr=[0x0A05]"},
                kFilterFailed);
}
Rows NoPush() {
    return Plus({kFilter + "110 Failed to push to list, vornerr=[0x0A02]",
                 kFilter + "144 Failed to get volume path list, vornerr=[0x0A02]"},
                kFilterFailed);
}
Rows NoControlGroup(const std::string& pid) {
    return {"3 filehandle_get_service_name:141 Failed to open pid " + pid + " cgroup"};
}
Rows NoStatus(const std::string& path) {
    return {"3 filehandle_get_atime:41 Failed to stat file [" + path +
            "], skipped. error=[Input/output error]"};
}

/** What both ways of enumerating have in common, on the list of either. */
std::vector<Case> CasesOfEither(const char* function, bool byShare) {
    const Rows& done = byShare ? kDone : kDoneByVolume;
    const Rows unlabelled = WithoutFlags(done);
    const auto shown = [&](const Rows& rows) { return byShare ? rows : ByVolume(rows); };
    const int lastList = byShare ? 5 : 4;
    const auto row = [&](const std::string& beginning) {
        return *std::find_if(done.begin(), done.end(), [&](const std::string& text) {
            return text.compare(0, beginning.size(), beginning) == 0;
        });
    };
    const auto changed = [&](const std::string& beginning, const std::string& from,
                             const std::string& to) {
        std::string text = row(beginning);
        text.replace(text.find(from), from.size(), to);
        return std::pair(row(beginning), text);
    };
    const auto missing = [&](const std::string& beginning) {
        return std::pair(row(beginning), std::string());
    };
    const std::string a = "21 /volume1/photo/@tmp/a";
    const std::string b = "21 /volume1/photo/b";
    const std::string c = "23 ";
    const std::string d = "24 ";
    const std::string dir = "22 ";
    const Rows smbIsPlain =
        But(done, {changed(a, "SMB", "smb plain"), changed(b, "SMB", "smb plain")});
    const Rows lastSshIsPlain = But(done, {changed(d, "SSH", "ssh plain")});
    const Rows firstIsInternal = But(done, {changed(b, "SMB", "Internal")});
    const Rows secondIsInternal = But(done, {changed(dir, "SSH 10.0.0.6 bob", "Internal - -")});
    const Rows lastIsInternal = But(done, {changed(d, "SSH", "Internal")});
    const Rows noAncestor = But(done, {changed(dir, "10.0.0.6 bob", "- -")});

    return {
        {function, "KLIBCSzListAlloc", 1, "-1", Plus({kScan + "30 Out of Memory"}, kScanFailed),
         kNone},
        {function, "KLIBCSzListAlloc", 2, "-1", Plus({kScan + "39 Out of Memory"}, kScanFailed),
         kNone},
        {function, "KLIBCSzListAlloc", 3, "-1",
         Plus({kFilter + "129 Failed to allocate list, vornerr=[0x0A01]"}, kFilterFailed),
         kScanned},
        {function, "KLIBCSzListAlloc", lastList, "-1",
         Plus({"3 filehandle_label_hidden:20 Failed to allocate list"}, kLabelFailed), unlabelled},
        {function, "KLIBCFileEnumDir", 1, "-1",
         Plus({kScan + "48 Fail to enum /proc, vornerr=[0x0A03]"}, kScanFailed), kNone},
        {function, "KLIBCFileEnumDir", 2, "0", SkippedProcess("21"),
         But(done, {missing(a), missing(b)})},
        {function, "KLIBCFileEnumDir", 5, "0", SkippedProcess("24"), But(done, {missing(d)})},
        {function, "readlink", 1, "0", {}, But(done, {missing(b)})},
        {function, "readlink", 2, "0", {}, But(done, {missing(a)})},
        {function, "readlink", 5, "0", {}, But(done, {missing(d)})},
        // Of unresolved processes nothing is remembered: the next file of 21 asks again.
        {function, "open", 1, "0", NoControlGroup("21"), firstIsInternal},
        {function, "open", 2, "0", NoControlGroup("22"), secondIsInternal},
        {function, "open", 4, "0", NoControlGroup("24"), lastIsInternal},
        {function, "read", 1, "0", {}, firstIsInternal},
        {function, "read", 2, "0", {}, secondIsInternal},
        {function, "read", 4, "0", {}, lastIsInternal},
        {function, "close", 1, "0", {}, done},
        {function, "close", 2, "0", {}, done},
        {function, "close", 4, "0", {}, done},
        // The first directory holds none of the unit files anyway.
        {function, "access", 1, "0", {}, done},
        {function, "access", 2, "0", {}, smbIsPlain, kMissingUnit},
        {function, "access", 10, "0", {}, lastSshIsPlain, kMissingUnit},
        {function, "KLIBCFileGetSectionValue", 1, "0", {}, smbIsPlain},
        {function,
         "KLIBCFileGetSectionValue",
         2,
         "0",
         {},
         But(done, {changed(dir, "SSH 10.0.0.6 bob", "ssh plain - -")})},
        {function, "KLIBCFileGetSectionValue", 5, "0", {}, lastSshIsPlain},
        {function, "VORNCurConnGet", 1, "-1", kConnectionFailed, shown(kServed)},
        {function, "KLIBCProcGetByPid", 1, "0", {}, noAncestor},
        {function, "KLIBCProcGetByPid", 2, "0", {}, noAncestor},
        {function, "KLIBCProcGetByPid", 3, "0", {}, done},
        {function, "VORNEAHiddenDirGet", 1, "-1",
         Plus({"3 filehandle_label_hidden:31 Failed to get hidden dir"}, kLabelFailed), unlabelled},
        {function,
         "KLIBCFileCheckDir",
         byShare ? 1 : 3,
         "0",
         {},
         But(done, {changed(dir, " folder", "")})},
        {function, "KLIBCFileCheckDir", byShare ? 3 : 1, "0", {}, done},
        {function, "KLIBCFileCheckDir", 2, "0", {}, done},
        {function, "KLIBCFileCheckDir", 5, "0", {}, done},
        // A null text is the one fault that leaves as an exception.
        {function, "StringBundle::Text", 1, "throws logic_error", {}, shown(kFiltered)},
        {function, "StringBundle::Text", 2, "throws logic_error", {}, shown(kFiltered)},
        {function, "StringBundle::Text", 3, "throws logic_error", {}, shown(kFilteredFirstServed)},
    };
}

const std::vector<Case> kCasesByShare = {
    {"share",
     "KLIBCSzListAlloc",
     4,
     "-1",
     Plus({kFilter + "63 Failed to allocate memory for list, vornerr=[0x0100]",
           kFilter + "139 Failed to get share path list, vornerr=[0x0100]"},
          kFilterFailed),
     kScanned,
     {"0x100 filehandle_filter_path:62"}},
    {"share", "VORNShareEnum", 1, "-1",
     Plus({kFilter + "72 Failed to get share, vornerr=[0x0A04]",
           kFilter + "139 Failed to get share path list, vornerr=[0x0A04]"},
          kFilterFailed),
     kScanned},
    {"share", "VORNShareGet", 1, "-1", NoShare("photo"), kScanned},
    {"share", "VORNShareGet", 2, "-1", NoShare("docs"), kScanned},
    {"share", "VORNShareGet", 3, "-1", NoShare("music"), kScanned},
    // Pushing a share's path is not checked: the share is missing without a word.
    {"share", "KLIBCSzListPush", 1, "0", {}, But(kDone, {{kDone[3], ""}, {kDone[4], ""}})},
    {"share", "KLIBCSzListPush", 2, "0", {}, But(kDone, {{kDone[0], ""}})},
    {"share", "KLIBCSzListPush", 3, "0", {}, But(kDone, {{kDone[1], ""}, {kDone[2], ""}})},
};

const std::vector<Case> kCasesByVolume = {
    {"volume", "VORNMountVolAllEnum", 1, "-1",
     Plus({kFilter + "98 Failed to enum all mounted volume, vornerr=[0x0A06]",
           kFilter + "144 Failed to get volume path list, vornerr=[0x0A06]"},
          kFilterFailed),
     kScanned},
    {"volume", "KLIBCSzListPush", 1, "-1", NoPush(), kScanned},
    {"volume", "KLIBCSzListPush", 2, "-1", NoPush(), kScanned},
    {"volume", "KLIBCSzListPush", 3, "-1", NoPush(), kScanned},
};

const Rows kTimeFailed = {"3 filehandle_get_atime:46 Failed to convert time, vornerr=[0x0100]"};
const Rows kTimeError = {"0x100 filehandle_get_atime:27"};

const std::vector<Case> kCasesOfTimes = {
    {"times", "stat", 1, "0", NoStatus("/volume1/photo/b"), But(kTimes, {{kTimes[0], ""}})},
    {"times", "stat", 2, "0", NoStatus("/volume2/docs/dir"), But(kTimes, {{kTimes[1], ""}})},
    {"times", "stat", 3, "0", NoStatus("/volume3/music/d"), But(kTimes, {{kTimes[2], ""}})},
    // Its result is not looked at: the fields stay as they were before, all zero.
    {"times",
     "localtime_r",
     1,
     "0",
     {},
     But(kTimes, {{kTimes[0], "21 /volume1/photo/b 1900/01/00 00:00:00"}})},
    {"times",
     "localtime_r",
     2,
     "0",
     {},
     But(kTimes, {{kTimes[1], "22 /volume2/docs/dir 1900/01/00 00:00:00"}})},
    {"times",
     "localtime_r",
     3,
     "0",
     {},
     But(kTimes, {{kTimes[2], "24 /volume3/music/d 1900/01/00 00:00:00"}})},
    {"times", "strftime", 1, "-1", kTimeFailed, kNoTimes, kTimeError},
    {"times", "strftime", 2, "-1", kTimeFailed, {kTimes[0], kNoTimes[1], kNoTimes[2]}, kTimeError},
    {"times", "strftime", 3, "-1", kTimeFailed, {kTimes[0], kTimes[1], kNoTimes[2]}, kTimeError},
};

// SMBService, atalk (no file), ftpd (no localised name), sshd, inetd (no file).
const std::vector<Case> kCasesOfKickable = {
    {"kickable", "access", 1, "0", kKickableLog, kKickable, kKickableErrors},
    {"kickable",
     "access",
     2,
     "0",
     kKickableLog,
     {"smb plain", "Ftp", "SSH"},
     Plus(kKickableErrors, kMissingUnit)},
    {"kickable", "access", 16, "0", kKickableLog, kKickable, kKickableErrors},
    {"kickable",
     "KLIBCFileGetSectionValue",
     1,
     "0",
     kKickableLog,
     {"smb plain", "Ftp", "SSH"},
     kKickableErrors},
    {"kickable", "KLIBCFileGetSectionValue", 2, "0", kKickableLog, kKickable, kKickableErrors},
    {"kickable",
     "KLIBCFileGetSectionValue",
     4,
     "0",
     kKickableLog,
     {"SMB", "Ftp", "ssh plain"},
     kKickableErrors},
    {"kickable", "StringBundle::Text", 1, "throws logic_error", {}, {}},
    {"kickable",
     "StringBundle::Text",
     2,
     "throws logic_error",
     {kKickableLog[0]},
     {"SMB", "Ftp"},
     {kKickableErrors[0], kKickableErrors[1]}},
};

std::vector<Case> AllCases() {
    std::vector<Case> cases = CasesOfEither("share", true);
    for (const Case& test : CasesOfEither("volume", false)) {
        cases.push_back(test);
    }
    for (const auto* more : {&kCasesByShare, &kCasesByVolume, &kCasesOfTimes, &kCasesOfKickable}) {
        cases.insert(cases.end(), more->begin(), more->end());
    }
    return cases;
}

bool IsOfPlatform(const std::string& call) {
    return call.rfind("KLIBC", 0) == 0 || call.rfind("VORN", 0) == 0 ||
           call.rfind("StringBundle", 0) == 0;
}

/** Functions of the C library that c-library-calls.txt lists as failing. */
std::set<std::string> FailingCallsOfCLibrary() {
    std::set<std::string> calls;
    std::ifstream list(VORN_C_LIBRARY_CALLS);
    for (std::string line; std::getline(list, line);) {
        std::string name;
        std::string kind;
        std::istringstream(line) >> name >> kind;
        if (kind == "fails" && name != "#") {
            calls.insert(name);
        }
    }
    return calls;
}

class CallFault : public unit::FaultHost {
protected:
    void SetUp() override {
        FaultHost::SetUp();
        libc.identities = {0, 0, {}, 0};
        setenv("TZ", "UTC0", 1);
    }
    void TearDown() override {
        unsetenv("TZ");
        FaultHost::TearDown();
    }
    void ExpectOutcome(const Outcome& outcome, const Case& test) {
        EXPECT_EQ(outcome.result, test.result);
        EXPECT_THAT(outcome.log, ElementsAreArray(test.log));
        EXPECT_THAT(outcome.errors, ElementsAreArray(test.errors));
        EXPECT_THAT(outcome.list, ElementsAreArray(test.list));
        EXPECT_THAT(platform.LiveObjects(), IsEmpty());
    }
};

}  // namespace

TEST_F(CallFault, LeavesWhatIsDocumentedAndTheNextCallWorks) {
    std::map<std::string, Outcome> good;
    for (const char* function : {"share", "volume", "times", "kickable"}) {
        good[function] = Run(function);
    }
    EXPECT_THAT(good["share"].list, ElementsAreArray(kDone));
    EXPECT_THAT(good["volume"].list, ElementsAreArray(kDoneByVolume));
    EXPECT_THAT(good["times"].list, ElementsAreArray(kTimes));
    EXPECT_THAT(good["kickable"].list, ElementsAreArray(kKickable));
    const size_t descriptors = unit::OpenDescriptors();
    for (const Case& test : AllCases()) {
        SCOPED_TRACE(std::string(test.function) + ": " + test.call + " " +
                     std::to_string(test.number));
        FailCall(test.call, test.number);
        ExpectOutcome(Run(test.function), test);
        EXPECT_EQ(unit::OpenDescriptors(), descriptors);
        FailNoCall();
        const Outcome& expected = good[test.function];
        ExpectOutcome(Run(test.function), {test.function, "", 0, expected.result.c_str(),
                                           expected.log, expected.list, expected.errors});
    }
    std::cout << AllCases().size() << " faults tried\n";
}

TEST_F(CallFault, IsTriedForEveryCallThatCanFail) {
    std::set<std::string> tried;
    for (const Case& test : AllCases()) {
        tried.insert(std::string(test.function) + " " + test.call + " " +
                     std::to_string(test.number));
    }
    for (const char* function : {"share", "volume", "times", "kickable"}) {
        for (const auto& [call, count] : CallsOf(function)) {
            for (const int number : {1, std::min(2, count), count}) {
                const std::string fault =
                    std::string(function) + " " + call + " " + std::to_string(number);
                EXPECT_EQ(tried.count(fault), 1U) << fault;
            }
        }
    }
}

TEST_F(CallFault, IsTriedForEveryListedCallOfTheCLibrary) {
    std::set<std::string> tried;
    for (const Case& test : AllCases()) {
        if (!IsOfPlatform(test.call)) {
            tried.insert(test.call);
        }
    }
    EXPECT_EQ(tried, FailingCallsOfCLibrary());
}

// The one exception to "nothing stays behind".
TEST_F(CallFault, ThatThrowsLeavesPrivilegesRaised) {
    libc.identities = {1000, 100, {}, 0};
    FailCall("StringBundle::Text", 1);
    EXPECT_EQ(Run("share").result, "throws logic_error");
    EXPECT_EQ(libc.identities->user, 0U);
    EXPECT_EQ(libc.identities->group, 0U);
    EXPECT_THAT(platform.LiveObjects(), IsEmpty());
}
