// SPDX-License-Identifier: MIT
#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <future>
#include <set>
#include <thread>

#include "tests/unit/support/privilege_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;

namespace {

using Ids = std::vector<int>; /**< real, effective, saved; of a thread also that of files */

struct State {
    const char* name;
    Ids users;
    Ids groups;
    int userInside;
    int groupInside;
    bool enterFails;
};

void PrintTo(const State& state, std::ostream* out) {
    *out << state.name;
}

const State kStates[] = {
    {"Root", {0, 0, 0}, {0, 0, 0}, 0, 0, false},
    {"RaisedEffective", {1000, 0, 1000}, {100, 0, 100}, 0, 0, false},
    {"SavedRoot", {1000, 1000, 0}, {100, 100, 0}, 0, 0, false},
    {"RealRoot", {0, 1000, 1000}, {0, 100, 100}, 0, 0, false},
    {"RootInAnotherGroup", {0, 0, 0}, {100, 100, 100}, 0, 0, false},
    {"SavedRootOfTheRootGroup", {1000, 1000, 0}, {0, 0, 0}, 0, 0, false},
    {"None", {1000, 1000, 1000}, {100, 100, 100}, 1000, 100, true},
    // The group comes first and needs a right of its own.
    {"SavedRootUserAlone", {1000, 1000, 0}, {100, 100, 100}, 1000, 100, true},
    {"SavedRootGroupAlone", {1000, 1000, 1000}, {100, 100, 0}, 1000, 0, true},
};

/** The line "Uid:" or "Gid:" of every thread of this process. */
std::set<Ids> IdsOfThreads(const std::string& line) {
    std::set<Ids> found;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(task.path() / "status");
        for (std::string word; status >> word;) {
            if (word == line) {
                Ids ids(4);
                status >> ids[0] >> ids[1] >> ids[2] >> ids[3];
                found.insert(ids);
            }
        }
    }
    return found;
}

/** Ids of a thread: files are opened with the effective one. */
Ids WithEffective(const Ids& ids, int effective) {
    return {ids[0], effective, ids[2], effective};
}

/** Real identities of a process with a thread, in each state that a process can be in. */
class PrivilegeOfThreads : public unit::PrivilegeTest, public ::testing::WithParamInterface<State> {
protected:
    void SetUp() override {
        if (getuid() != 0) {
            GTEST_SKIP() << "needs root, to become other users";
        }
        PrivilegeTest::SetUp();
    }
    static void Become(const State& state) {
        const auto id = [](int number) { return static_cast<uid_t>(number); };
        ASSERT_EQ(setgroups(0, nullptr), 0);
        const Ids& groups = state.groups;
        ASSERT_EQ(setresgid(id(groups[0]), id(groups[1]), id(groups[2])), 0);
        const Ids& users = state.users;
        ASSERT_EQ(setresuid(id(users[0]), id(users[1]), id(users[2])), 0);
    }
    void Enumerate(const State& state) {
        std::set<Ids> usersInside;
        std::set<Ids> groupsInside;
        journal.onCall = [&](const std::string& call) {
            if (call == unit::identity_calls::kEnumerate) {
                usersInside = IdsOfThreads("Uid:");
                groupsInside = IdsOfThreads("Gid:");
            }
        };
        EXPECT_EQ(VORNEnumOpenedFile(files, ENUM_BY_SHARE), 0);
        EXPECT_EQ(errno, 0);
        // One value: every thread has the same identities.
        EXPECT_THAT(usersInside, ElementsAre(WithEffective(state.users, state.userInside)));
        EXPECT_THAT(groupsInside, ElementsAre(WithEffective(state.groups, state.groupInside)));
        EXPECT_THAT(IdsOfThreads("Uid:"), ElementsAre(WithEffective(state.users, state.users[1])));
        EXPECT_THAT(IdsOfThreads("Gid:"),
                    ElementsAre(WithEffective(state.groups, state.groups[1])));
        if (state.enterFails) {
            EXPECT_TRUE(EnterLogged());
        }
        EXPECT_EQ(libc.logLines.size(), state.enterFails ? 1U : 0U);
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(In, PrivilegeOfThreads, ::testing::ValuesIn(kStates),
                         [](const auto& test) { return test.param.name; });

TEST_P(PrivilegeOfThreads, IsRaisedForAllOfThemAndRestored) {
    unit::RunInChild([this] {
        std::promise<void> end;
        std::thread other([&] { end.get_future().wait(); });
        Become(GetParam());
        Enumerate(GetParam());
        end.set_value();
        other.join();
    });
}
