// SPDX-License-Identifier: MIT
#include "cli/events/process_memory.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

namespace {

using cli::FileEvents;
using cli::ProcessAnswer;
using namespace std::chrono_literals;

/** A process that waits to be ended. */
class Waiting {
public:
    Waiting() : pid_(fork()) {
        if (pid_ == 0) {
            pause();
            _exit(0);
        }
    }
    ~Waiting() { End(); }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    pid_t Pid() const { return pid_; }
    support::Descriptor Descriptor() const {
        return support::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
    }
    void End() {
        if (!ended_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
            ended_ = true;
        }
    }

private:
    pid_t pid_;
    bool ended_ = false;
};

class Processes : public testing::Test {
protected:
    void Answer(std::vector<ProcessAnswer>& processes) {
        asked_.emplace_back();
        for (ProcessAnswer& process : processes) {
            asked_.back().push_back(process.texts.pid);
            process.texts.user = "user " + std::to_string(asked_.size());
            process.start = 5;
        }
        if (endsWhenAsked_ != nullptr) {
            endsWhenAsked_->End();
        }
    }

    /** One event of each; the users of their answers, "" for none. */
    std::vector<std::string> Meet(const std::vector<const Waiting*>& processes) {
        FileEvents events;
        for (const Waiting* process : processes) {
            cli::FileEvent& event = events.emplace_back();
            event.pid = process->Pid();
            event.process = process->Descriptor();
        }
        std::vector<std::string> users;
        for (const ProcessAnswer* answer : memory_.Meet(events)) {
            users.push_back(answer != nullptr ? answer->texts.user : "");
        }
        return users;
    }

    using Users = std::vector<std::string>;
    cli::ProcessMemory::Clock::time_point now_{1h};
    std::vector<std::vector<std::string>> asked_;
    Waiting* endsWhenAsked_ = nullptr;
    cli::ProcessMemory memory_{[this](auto& processes) { Answer(processes); }, 4,
                               [this] { return now_; }};
    Waiting a_;
    Waiting b_;
};

TEST_F(Processes, AreAskedForOnceAndAllTogether) {
    EXPECT_EQ(Meet({&a_, &b_, &a_}), (Users{"user 1", "user 1", "user 1"}));
    EXPECT_EQ(Meet({&b_}), Users{"user 1"});
    ASSERT_EQ(asked_.size(), 1U);
    EXPECT_EQ(asked_[0].size(), 2U);
}

TEST_F(Processes, AreAskedForAgainAfterSomeTime) {
    Meet({&a_});
    now_ += 9s;
    EXPECT_EQ(Meet({&a_}), Users{"user 1"});
    now_ += 1s;
    EXPECT_EQ(Meet({&a_}), Users{"user 2"});
    now_ += 9s;
    EXPECT_EQ(Meet({&a_}), Users{"user 2"});
}

TEST_F(Processes, AreAskedForWithOthersWhenTheyAreSoonDueAndStillMet) {
    Meet({&a_});
    Meet({&a_});
    now_ += 6s;
    EXPECT_EQ(Meet({&b_}), Users{"user 2"});
    EXPECT_EQ(asked_[1].size(), 2U);
    now_ += 6s;
    EXPECT_EQ(Meet({&a_}), Users{"user 2"});
}

TEST_F(Processes, ThatHaveEndedAreUnknown) {
    FileEvents events(1);
    events[0].pid = a_.Pid();
    EXPECT_EQ(memory_.Meet(events), std::vector<const ProcessAnswer*>{nullptr});
    EXPECT_TRUE(asked_.empty());
}

TEST_F(Processes, AreUnknownWhenSomebodyElseMayHaveHadTheirId) {
    Meet({&a_});
    FileEvents events(1);
    events[0].pid = a_.Pid();
    EXPECT_EQ(memory_.Meet(events), std::vector<const ProcessAnswer*>{nullptr});
}

TEST_F(Processes, ThatEndWhileTheyAreAskedForAreUnknown) {
    endsWhenAsked_ = &a_;
    EXPECT_EQ(Meet({&a_, &b_}), (Users{"", "user 1"}));
    EXPECT_EQ(memory_.Size(), 1U);
}

TEST_F(Processes, AreOthersWhenTheIdIsGivenAgain) {
    Meet({&a_});
    a_.End();
    // As the kernel would tell of another process that has the id now.
    FileEvents events(1);
    events[0].pid = a_.Pid();
    events[0].process = b_.Descriptor();
    const auto answers = memory_.Meet(events);
    ASSERT_NE(answers[0], nullptr);
    EXPECT_EQ(answers[0]->texts.user, "user 2");
}

TEST_F(Processes, AreNoMoreThanThereIsRoomFor) {
    Waiting more[6];
    Meet({&a_, &b_});
    for (const Waiting& each : more) {
        Meet({&a_});
        Meet({&each});
        EXPECT_LE(memory_.Size(), 4U);
    }
    const size_t before = asked_.size();
    Meet({&a_});
    EXPECT_EQ(asked_.size(), before) << "the one that is met all the time was forgotten";
    Meet({&b_});
    EXPECT_EQ(asked_.size(), before + 1);
}

}  // namespace
