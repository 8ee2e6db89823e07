// SPDX-License-Identifier: MIT
#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "tests/unit/support/privilege_test.h"

using namespace VORN::FileHandle;
using namespace unit::identity_calls;
using ::testing::ElementsAre;

namespace {

/** Real, effective and saved id. */
template <typename Id>
std::vector<Id> Ids(int (*get)(Id*, Id*, Id*)) {
    std::vector<Id> ids(3);
    get(&ids[0], &ids[1], &ids[2]);
    return ids;
}

/** The privilege scope with real identities, in child processes. */
class RealPrivilege : public unit::PrivilegeTest {
protected:
    void SetUp() override {
        if (getuid() != 0) {
            GTEST_SKIP() << "needs root, to become other users";
        }
        PrivilegeTest::SetUp();
        journal.onCall = [this](const std::string& call) {
            if (call == kEnumerate) {
                userInside = Ids(&getresuid)[1];
                groupInside = Ids(&getresgid)[1];
            }
        };
    }
    void Become(uid_t user, gid_t group, uid_t savedUser, gid_t savedGroup) {
        ASSERT_EQ(setgroups(0, nullptr), 0);
        ASSERT_EQ(setresgid(group, group, savedGroup), 0);
        ASSERT_EQ(setresuid(user, user, savedUser), 0);
        journal.Clear();
    }

    uid_t userInside = 4711;
    gid_t groupInside = 4711;
};

}  // namespace

TEST_F(RealPrivilege, IsRaisedAndRestoredForACallerWhoMayBecomeRoot) {
    unit::RunInChild([this] {
        Become(1000, 100, 0, 0);
        EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
        EXPECT_EQ(errno, 0);
        EXPECT_EQ(files.size(), 4U);
        EXPECT_EQ(userInside, 0U);
        EXPECT_EQ(groupInside, 0U);
        EXPECT_THAT(Ids(&getresuid), ElementsAre(1000, 1000, 0));
        EXPECT_THAT(Ids(&getresgid), ElementsAre(100, 100, 0));
    });
}

TEST_F(RealPrivilege, IsNotRaisedForACallerWithoutAnyRight) {
    unit::RunInChild([this] {
        Become(1000, 100, 1000, 100);
        EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
        EXPECT_EQ(errno, 0);
        EXPECT_TRUE(EnterLogged());
        EXPECT_THAT(IdentityCalls(), ElementsAre(kRaiseGroup, kEnumerate));
        EXPECT_EQ(files.size(), 4U);
        EXPECT_EQ(userInside, 1000U);
        EXPECT_EQ(groupInside, 100U);
        EXPECT_THAT(Ids(&getresuid), ElementsAre(1000, 1000, 1000));
        EXPECT_THAT(Ids(&getresgid), ElementsAre(100, 100, 100));
    });
}

TEST_F(RealPrivilege, IsRaisedInUserAloneForACallerOfTheRootGroup) {
    unit::RunInChild([this] {
        Become(1000, 0, 0, 0);
        EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
        EXPECT_EQ(errno, 0);
        EXPECT_EQ(userInside, 0U);
        EXPECT_THAT(Ids(&getresuid), ElementsAre(1000, 1000, 0));
    });
}

TEST_F(RealPrivilege, NeedsNoCallForRoot) {
    unit::RunInChild([this] {
        Become(0, 0, 0, 0);
        EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
        EXPECT_EQ(errno, 0);
        EXPECT_THAT(IdentityCalls(), ElementsAre(kEnumerate));
    });
}

TEST_F(RealPrivilege, StaysRaisedWhenAnExceptionPasses) {
    libc.links["/proc/9/fd/4"] = "/volume";
    unit::RunInChild([this] {
        Become(1000, 100, 0, 0);
        EXPECT_THROW(VORNEnumOpenedFile(files, ENUM_BY_SHARE), std::out_of_range);
        EXPECT_THAT(Ids(&getresuid), ElementsAre(1000, 0, 0));
        EXPECT_THAT(Ids(&getresgid), ElementsAre(100, 0, 0));
    });
}

TEST_F(RealPrivilege, CanBePutBackByACallerAsTheHeaderSays) {
    libc.links["/proc/9/fd/4"] = "/volume";
    unit::RunInChild([this] {
        // A group that only root may go back to.
        ASSERT_EQ(setresgid(100, 200, 0), 0);
        ASSERT_EQ(setresuid(1000, 1000, 0), 0);
        const uid_t user = geteuid();
        const gid_t group = getegid();
        EXPECT_THROW(VORNEnumOpenedFile(files, ENUM_BY_SHARE), std::out_of_range);
        EXPECT_EQ(setegid(group), 0);
        EXPECT_EQ(seteuid(user), 0);
        EXPECT_THAT(Ids(&getresuid), ElementsAre(1000, 1000, 0));
        EXPECT_THAT(Ids(&getresgid), ElementsAre(100, 200, 0));
    });
}
