// SPDX-License-Identifier: MIT
#include <cerrno>
#include <new>
#include <stdexcept>

#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/privilege_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using namespace unit::identity_calls;

using Privilege = unit::PrivilegeTest;

namespace {

struct Case {
    const char* name;
    uid_t user;
    gid_t group;
    std::vector<int> failures; /**< identity calls, from 1, that fail */
    std::vector<const char*> calls;
    bool enterFails;
    bool leaveFails;
    uid_t userAfter;
    gid_t groupAfter;
};

void PrintTo(const Case& test, std::ostream* out) {
    *out << test.name;
}

const Case kCases[] = {
    {"Root", 0, 0, {}, {kEnumerate}, false, false, 0, 0},
    {"Nobody",
     1000,
     100,
     {},
     {kRaiseGroup, kRaiseUser, kEnumerate, kRaiseUser, kRestoreGroup, kRestoreUser},
     false,
     false,
     1000,
     100},
    {"UserOfTheRootGroup",
     1000,
     0,
     {},
     {kRaiseUser, kEnumerate, kRaiseUser, kRestoreUser},
     false,
     false,
     1000,
     0},
    {"RootInAnotherGroup",
     0,
     100,
     {},
     {kRaiseGroup, kEnumerate, kRestoreGroup},
     false,
     false,
     0,
     100},
    {"GroupNotRaised", 1000, 100, {1}, {kRaiseGroup, kEnumerate}, true, false, 1000, 100},
    {"GroupOfRootNotRaised", 0, 100, {1}, {kRaiseGroup, kEnumerate}, true, false, 0, 100},
    {"UserNotRaised",
     1000,
     100,
     {2},
     {kRaiseGroup, kRaiseUser, kEnumerate, kRestoreGroup},
     true,
     false,
     1000,
     100},
    {"UserOfTheRootGroupNotRaised", 1000, 0, {1}, {kRaiseUser, kEnumerate}, true, false, 1000, 0},
    {"UserNotRaisedAndGroupNotRestored",
     1000,
     100,
     {2, 3},
     {kRaiseGroup, kRaiseUser, kEnumerate, kRestoreGroup},
     true,
     true,
     1000,
     0},
    {"NotRaisedForRestoring",
     1000,
     100,
     {3},
     {kRaiseGroup, kRaiseUser, kEnumerate, kRaiseUser},
     false,
     true,
     0,
     0},
    {"GroupNotRestored",
     1000,
     100,
     {4},
     {kRaiseGroup, kRaiseUser, kEnumerate, kRaiseUser, kRestoreGroup},
     false,
     true,
     0,
     0},
    {"UserNotRestored",
     1000,
     100,
     {5},
     {kRaiseGroup, kRaiseUser, kEnumerate, kRaiseUser, kRestoreGroup, kRestoreUser},
     false,
     true,
     0,
     100},
    {"UserOfTheRootGroupNotRaisedForRestoring",
     1000,
     0,
     {2},
     {kRaiseUser, kEnumerate, kRaiseUser},
     false,
     true,
     0,
     0},
    {"UserOfTheRootGroupNotRestored",
     1000,
     0,
     {3},
     {kRaiseUser, kEnumerate, kRaiseUser, kRestoreUser},
     false,
     true,
     0,
     0},
    {"GroupOfRootNotRestored",
     0,
     100,
     {2},
     {kRaiseGroup, kEnumerate, kRestoreGroup},
     false,
     true,
     0,
     0},
};

class PrivilegeSequence : public unit::PrivilegeTest, public ::testing::WithParamInterface<Case> {};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Of, PrivilegeSequence, ::testing::ValuesIn(kCases),
                         [](const auto& test) { return test.param.name; });

TEST_P(PrivilegeSequence, MakesItsIdentityCallsInOrder) {
    const Case& test = GetParam();
    BeIdentity(test.user, test.group, test.failures);
    errno = EINTR;
    EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_EQ(errno, test.leaveFails ? EPERM : 0);
    EXPECT_THAT(IdentityCalls(), ElementsAreArray(test.calls));
    EXPECT_EQ(libc.identities->user, test.userAfter);
    EXPECT_EQ(libc.identities->group, test.groupAfter);
    EXPECT_EQ(files.size(), 4U);
    if (test.enterFails) {
        EXPECT_TRUE(EnterLogged());
    }
    if (test.leaveFails) {
        EXPECT_TRUE(LeaveLogged());
    }
    for (const unit::LogLine& line : libc.logLines) {
        EXPECT_EQ(line.error, EPERM);
    }
}

TEST_P(PrivilegeSequence, GivesThePipelinesFailureBack) {
    const Case& test = GetParam();
    BeIdentity(test.user, test.group, test.failures);
    platform.shares.clear();
    platform.shareEnumResult = -1;
    EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_EQ(errno, test.leaveFails ? EPERM : 0);
    EXPECT_THAT(IdentityCalls(), ElementsAreArray(test.calls));
    if (test.enterFails) {
        EXPECT_TRUE(EnterLogged());
    }
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share, vornerr=[0x%04X]",
                       "filehandle_filter_path", 72, unit::ScriptedPlatform::kShareEnumError));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share path list, vornerr=[0x%04X]",
                       "filehandle_filter_path", 139, unit::ScriptedPlatform::kShareEnumError));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to filter path for file handle", "filehandle_enum", 29));
    if (test.leaveFails) {
        EXPECT_TRUE(LeaveLogged());
    }
}

TEST_F(Privilege, ClearsErrnoBeforeTheFirstStage) {
    BeIdentity(1000, 100);
    int errnoInside = -1;
    journal.onCall = [&](const std::string& call) {
        if (errnoInside < 0 && call == "KLIBCSzListAlloc(512)") {
            errnoInside = errno;
        }
    };
    errno = EINTR;
    EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_EQ(errnoInside, 0);
}

TEST_F(Privilege, RestoresIdentitiesThatAStageChanged) {
    BeIdentity(0, 0);
    journal.onCall = [this](const std::string& call) {
        if (call == kEnumerate) {
            libc.identities->user = 5;
            libc.identities->group = 6;
        }
    };
    EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(IdentityCalls(), ElementsAre(kEnumerate, kRaiseUser, kRaiseGroup, kRaiseUser));
    EXPECT_EQ(errno, 0);
}

TEST_F(Privilege, KeepsOldRecordsOfTheList) {
    BeIdentity(0, 0);
    files = unit::Records({{"9", "/volume1/photo/0"}});
    EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(PidsAndPaths(), ElementsAre("10 docs/dir", "9 photo/0", "9 photo/@tmp/a",
                                            "10 photo/b", "9 photo/b"));
}

TEST_F(Privilege, PassesTheOptionOn) {
    BeIdentity(0, 0);
    EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_VOLUME), 0);
    EXPECT_EQ(files.front().getPath(), "/volume1/photo/@tmp/a");
    EXPECT_EQ(VORNEnumOpenedFile(files, 2), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to filter path. wrong [enumby] option",
                       "filehandle_filter_path", 148));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to filter path for file handle", "filehandle_enum", 29));
}

TEST_F(Privilege, StaysRaisedWhenAnExceptionPasses) {
    BeIdentity(1000, 100);
    libc.links["/proc/9/fd/4"] = "/volume";
    EXPECT_THROW(VORNEnumOpenedFile(files, ENUM_BY_SHARE), std::out_of_range);
    EXPECT_THAT(IdentityCalls(), ElementsAre(kRaiseGroup, kRaiseUser));
    EXPECT_EQ(libc.identities->user, 0U);
    EXPECT_EQ(libc.identities->group, 0U);
    EXPECT_THAT(unit::Shown(files), ElementsAre("9 /volume1/photo/b"));
}

TEST_F(Privilege, LetsEveryFailedAllocationThrough) {
    // A pid that makes paths too long to be had without memory, and an ancestor to search for.
    AddProcess("1234567", "sshd.slice", "SSH", {"/volume1/photo/" + std::string(40, 'c')});
    platform.connections.push_back({1000000, "10.0.0.6", "bob", 10});
    platform.processes[1234567].ppid = 1000000;
    int thrown = 0;
    bool fired = true;
    for (int number = 1; fired; ++number) {
        SCOPED_TRACE(number);
        files.clear();
        BeIdentity(1000, 100);
        const size_t linesBefore = libc.logLines.size();
        uid_t user = 1000;
        gid_t group = 100;
        try {
            const unit::FailingNew failing(number);
            EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
        } catch (const std::bad_alloc&) {
            ++thrown;
            user = 0;
            group = 0;
        }
        fired = unit::FailingNew::Fired();
        EXPECT_EQ(libc.identities->user, user);
        EXPECT_EQ(libc.identities->group, group);
        EXPECT_THAT(platform.LiveObjects(), ::testing::IsEmpty());
        if (libc.logLines.size() != linesBefore) {
            EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to open pid %s cgroup, error=[%s]",
                               "filehandle_get_service_name", 136, "1234567",
                               std::bad_alloc().what()));
        }
    }
    EXPECT_GT(thrown, 0);
    EXPECT_THAT(unit::Column(files, &OpenedFile::getUser), ::testing::Contains("bob"));
}
