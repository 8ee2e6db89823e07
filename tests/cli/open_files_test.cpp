// SPDX-License-Identifier: MIT
#include "cli/question/open_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "support/descriptor.h"

namespace {

using Paths = std::vector<std::string>;

/** One file by one process. */
struct Held {
    std::string path;
    std::string pid;
    cli::BootTicks start = 7;
};

cli::Snapshot Look(const std::vector<Held>& held, const std::string& lack = "") {
    cli::Snapshot look;
    cli::RecordTexts& texts = look.texts.emplace_back();
    for (const Held& each : held) {
        cli::FileRecord& file = look.files.emplace_back();
        file.fullPath = texts.Keep(each.path);
        file.process = &texts.AddProcess({each.pid, "", "", ""});
        auto facts = std::make_shared<cli::HolderFacts>();
        facts->start = each.start;
        look.facts.push_back({cli::Facts()});
        look.facts.back().front().process = facts;
        file.facts = &look.facts.back().front();
    }
    look.incompleteReason = lack;
    return look;
}

Paths PathsOf(const std::vector<const cli::FileRecord*>& files) {
    Paths paths;
    for (const cli::FileRecord* const file : files) {
        paths.emplace_back(file->fullPath);
    }
    return paths;
}

class OpenFiles : public testing::Test {
protected:
    /** A process that is there, and one that can't be. */
    const std::string own_ = std::to_string(getpid());
    const std::string gone_ = "4194304";

    Paths Opened() const { return PathsOf(files_.News().opened); }
    Paths Closed() const { return PathsOf(files_.News().closed); }

    cli::OpenFiles files_;
};

TEST_F(OpenFiles, AreAllOpenedByTheFirstLook) {
    files_.Take(Look({{"/a", "1"}, {"/b", "1"}}));
    EXPECT_EQ(Opened(), (Paths{"/a", "/b"}));
    EXPECT_TRUE(files_.News().first);
}

TEST_F(OpenFiles, OpenAndCloseFromOneLookToTheNext) {
    files_.Take(Look({{"/a", "1"}, {"/b", "1"}}));
    files_.Take(Look({{"/b", "1"}, {"/b", "2"}, {"/c", "1"}}));
    EXPECT_EQ(Opened(), (Paths{"/b", "/c"}));
    EXPECT_EQ(Closed(), Paths{"/a"});
    EXPECT_FALSE(files_.News().first);
    files_.Take(Look({}));
    EXPECT_EQ(Closed(), (Paths{"/b", "/b", "/c"}));
    files_.Take(Look({}));
    EXPECT_EQ(Closed(), Paths());
}

TEST_F(OpenFiles, AreOthersByAnotherProcessOfTheSameId) {
    files_.Take(Look({{"/a", "1", 7}}));
    files_.Take(Look({{"/a", "1", 8}}));
    EXPECT_EQ(Opened(), Paths{"/a"});
    EXPECT_EQ(Closed(), Paths{"/a"});
}

TEST_F(OpenFiles, KeepTheStartOfAProcessThatHasEndedMeanwhile) {
    files_.Take(Look({{"/a", "1", 7}}));
    files_.Take(Look({{"/a", "1", 0}}));
    EXPECT_EQ(Opened(), Paths());
    files_.Take(Look({}));
    ASSERT_EQ(Closed(), Paths{"/a"});
    EXPECT_EQ(cli::StartOf(*files_.News().closed.front()), 7U);
}

TEST_F(OpenFiles, AreNotClosedByALookThatLacksThemWhileTheirProcessHoldsThem) {
    std::string path = testing::TempDir() + "held-XXXXXX";
    support::Descriptor held(mkostemp(path.data(), O_CLOEXEC));
    ASSERT_TRUE(held);
    unlink(path.c_str());
    const std::string link = path + " (deleted)";
    files_.Take(Look({{link, own_, 0}, {"/b", own_, 0}, {"/c", gone_}}));
    files_.Take(Look({}, "a process can't be examined"));
    // These aren't held, by this process and by one that there can't be.
    EXPECT_EQ(Closed(), (Paths{"/b", "/c"}));
    files_.Take(Look({}, "a process can't be examined"));
    EXPECT_EQ(Closed(), Paths());
    files_.Take(Look({{link, own_, 0}}));
    EXPECT_EQ(Opened(), Paths());
    files_.Take(Look({}, "another reason"));
    EXPECT_EQ(Closed(), Paths());
    held.Reset();
    files_.Take(Look({}, "another reason"));
    EXPECT_EQ(Closed(), Paths{link});
    files_.Take(Look({}));
    EXPECT_EQ(Closed(), Paths());
}

TEST_F(OpenFiles, AreClosedByTheNextLookThatLacksNothing) {
    std::string path = testing::TempDir() + "held-XXXXXX";
    const support::Descriptor held(mkostemp(path.data(), O_CLOEXEC));
    unlink(path.c_str());
    const std::string link = path + " (deleted)";
    files_.Take(Look({{link, own_, 0}}));
    files_.Take(Look({}, "a process can't be examined"));
    EXPECT_EQ(Closed(), Paths());
    files_.Take(Look({}));
    EXPECT_EQ(Closed(), Paths{link});
}

}  // namespace
