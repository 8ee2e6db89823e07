// SPDX-License-Identifier: MIT
#include "platform/linux/connections/smb_user_memory.h"

#include <gtest/gtest.h>

namespace {

using namespace vornplatform;
using std::chrono::seconds;

const SmbServer kFirst{8661, 100};
const SmbServer kSecond{8667, 200};

/** Sessions that ask a scripted smbstatus, under a clock that the test moves. */
class SmbUser : public testing::Test {
protected:
    SmbUsers UsersOf(const std::vector<SmbServer>& servers) {
        return memory_.UsersOf(servers).users;
    }

    std::optional<SmbUsers> answer_ = SmbUsers{{8661, {"alice"}}, {8667, {"bob"}}};
    std::optional<SmbUsers> openers_;
    int asked_ = 0;
    int askedForOpeners_ = 0;
    SmbUserMemory::Clock::time_point now_{};
    SmbUserMemory memory_{[this](SmbQuestion question) {
                              if (question == SmbQuestion::kOpenFiles) {
                                  ++askedForOpeners_;
                                  return openers_;
                              }
                              ++asked_;
                              return answer_;
                          },
                          [this] { return now_; }};
};

TEST_F(SmbUser, IsNotAskedForWithoutAServer) {
    EXPECT_EQ(UsersOf({}), SmbUsers());
    EXPECT_EQ(asked_, 0);
}

TEST_F(SmbUser, IsAskedForOnceForAllServers) {
    EXPECT_EQ(UsersOf({kFirst, kSecond}), (SmbUsers{{8661, {"alice"}}, {8667, {"bob"}}}));
    EXPECT_EQ(asked_, 1);
}

TEST_F(SmbUser, IsRemembered) {
    UsersOf({kFirst, kSecond});
    EXPECT_EQ(UsersOf({kSecond}), (SmbUsers{{8667, {"bob"}}}));
    EXPECT_EQ(UsersOf({kFirst}), (SmbUsers{{8661, {"alice"}}}));
    EXPECT_EQ(asked_, 1);
}

TEST_F(SmbUser, IsAskedForAgainForANewServer) {
    UsersOf({kFirst});
    EXPECT_EQ(UsersOf({kFirst, kSecond}), (SmbUsers{{8661, {"alice"}}, {8667, {"bob"}}}));
    EXPECT_EQ(asked_, 2);
}

TEST_F(SmbUser, IsNotTakenFromAnEarlierProcessOfThatPid) {
    UsersOf({kFirst});
    answer_ = SmbUsers{{8661, {"carol"}}};
    EXPECT_EQ(UsersOf({{8661, 101}}), (SmbUsers{{8661, {"carol"}}}));
    answer_ = SmbUsers();
    EXPECT_EQ(UsersOf({{8661, 102}}), SmbUsers());
}

TEST_F(SmbUser, IsAskedForOnceACallWhileAServerHasNone) {
    answer_ = SmbUsers{{8667, {"bob"}}};
    for (int call = 1; call <= 3; ++call) {
        EXPECT_EQ(UsersOf({kFirst, kSecond}), (SmbUsers{{8667, {"bob"}}}));
        EXPECT_EQ(asked_, call);
    }
}

TEST_F(SmbUser, IsRefreshedAfterAWhile) {
    UsersOf({kFirst});
    answer_ = SmbUsers{{8661, {"alice", "bob"}}};
    now_ += SmbUserMemory::kMaxAge - seconds(1);
    EXPECT_EQ(UsersOf({kFirst}), (SmbUsers{{8661, {"alice"}}}));
    now_ += seconds(1);
    EXPECT_EQ(UsersOf({kFirst}), (SmbUsers{{8661, {"alice", "bob"}}}));
    EXPECT_EQ(asked_, 2);
}

TEST_F(SmbUser, IsNotAskedForAgainRightAfterAFailure) {
    answer_.reset();
    EXPECT_EQ(UsersOf({kFirst}), SmbUsers());
    now_ += SmbUserMemory::kPause - seconds(1);
    EXPECT_EQ(UsersOf({kFirst}), SmbUsers());
    EXPECT_EQ(asked_, 1);
    now_ += seconds(1);
    answer_ = SmbUsers{{8661, {"alice"}}};
    EXPECT_EQ(UsersOf({kFirst}), (SmbUsers{{8661, {"alice"}}}));
    EXPECT_EQ(asked_, 2);
}

TEST_F(SmbUser, OutlivesAFailure) {
    UsersOf({kFirst});
    answer_.reset();
    EXPECT_EQ(UsersOf({kFirst, kSecond}), (SmbUsers{{8661, {"alice"}}}));
    EXPECT_EQ(asked_, 2);
}

TEST_F(SmbUser, IsWhoHasFilesOpenAtThatMomentOfSeveral) {
    answer_ = SmbUsers{{8661, {"alice", "bob"}}, {8667, {"bob"}}};
    openers_ = SmbUsers{{8661, {"bob"}}, {8667, {"bob", "carol"}}};
    EXPECT_EQ(UsersOf({kFirst, kSecond}), (SmbUsers{{8661, {"bob"}}, {8667, {"bob"}}}));
    openers_ = SmbUsers{{8661, {"alice"}}};
    EXPECT_EQ(UsersOf({kFirst, kSecond}), (SmbUsers{{8661, {"alice"}}, {8667, {"bob"}}}));
    EXPECT_EQ(asked_, 1);
    EXPECT_EQ(askedForOpeners_, 2);
    EXPECT_EQ(memory_.UsersOf({kFirst, kSecond}).shared, std::unordered_set<pid_t>{8661});
}

TEST_F(SmbUser, OfSeveralIsNotAskedForAgainRightAfterAFailure) {
    answer_ = SmbUsers{{8661, {"alice", "bob"}}};
    EXPECT_EQ(UsersOf({kFirst}), answer_);
    EXPECT_EQ(UsersOf({kFirst}), answer_);
    EXPECT_EQ(askedForOpeners_, 1);
    now_ += SmbUserMemory::kPause;
    openers_ = SmbUsers{{8661, {"alice"}}};
    EXPECT_EQ(UsersOf({kFirst}), openers_);
}

}  // namespace
