// SPDX-License-Identifier: MIT
#include "cli/question/snapshot.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <mutex>

#include "tests/cli/scripted_host.h"

namespace {

using cli::Column;

/** Files of this process, in one portion. */
class OwnFiles : public cli::RecordSource {
public:
    explicit OwnFiles(std::vector<std::string> paths) : paths_(std::move(paths)) {}

    int Next(cli::Files& records, cli::RecordTexts& texts) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        const int left = paths_.empty() ? 0 : 1;
        for (const std::string& path : paths_) {
            cli::FileRecord& file = records.emplace_back();
            file.fullPath = texts.Keep(path);
            file.process = &texts.AddProcess({std::to_string(getpid()), "", "", ""});
        }
        paths_.clear();
        return left;
    }
    std::string Notice() const override { return ""; }

private:
    std::mutex mutex_; /**< of the paths, which the first thread takes */
    std::vector<std::string> paths_;
};

/** What is looked at in a question that shows some of many records. */
class LimitedLook : public testing::Test {
protected:
    static constexpr size_t kRecords = 1200;
    static constexpr size_t kMost = 700;

    void SetUp() override {
        for (size_t i = 0; i < kRecords; ++i) {
            paths_.push_back("/volume1/photo/" + std::to_string(1000000 + i));
        }
        scriptedHost = ScriptedHost();
        scriptedHost.shares = {"/volume1/photo"};
        scriptedHost.hidden = {"/.trash/"};
        question_.asked = {false, false, false, {}, false};
        question_.asked.facts.set(static_cast<size_t>(Column::kCommand));
        question_.time = true;
        question_.most = kMost;
    }

    /** Records whose facts and whose times were asked for: where there is none to be had, too. */
    std::pair<size_t, size_t> Asked() {
        OwnFiles source(paths_);
        snapshot_ = {};
        cli::FillSnapshot(snapshot_, question_, source);
        EXPECT_EQ(snapshot_.files.size(), kRecords);
        size_t facts = 0;
        size_t times = 0;
        for (const cli::FileRecord& file : snapshot_.files) {
            facts += file.facts == nullptr ? 0 : 1;
            times += file.time.empty() ? 0 : 1;
        }
        return {facts, times};
    }

    std::vector<std::string> paths_;
    cli::Question question_;
    cli::Snapshot snapshot_;
};

TEST_F(LimitedLook, IsAtWhatIsShownAlone) {
    EXPECT_EQ(Asked(), std::make_pair(kMost, kMost));
    // The first ones, in their order.
    size_t at = 0;
    for (const cli::FileRecord& file : snapshot_.files) {
        ASSERT_EQ(file.fullPath, paths_[at]);
        EXPECT_EQ(file.time.empty(), at >= kMost);
        EXPECT_EQ(file.facts != nullptr, at < kMost);
        ++at;
    }
    question_.reverse = true;
    EXPECT_EQ(Asked(), std::make_pair(kMost, kMost));
    EXPECT_EQ(snapshot_.files.front().fullPath, paths_.back());
    EXPECT_NE(snapshot_.files.front().facts, nullptr);
    question_.most = kRecords + 1;
    EXPECT_EQ(Asked(), std::make_pair(kRecords, kRecords));
}

TEST_F(LimitedLook, IsAtAllWhereThatDecidesWhatIsShown) {
    question_.sort = {Column::kCommand};
    EXPECT_EQ(Asked(), std::make_pair(kRecords, kMost));
    question_.sort = {Column::kPid, Column::kTime};
    EXPECT_EQ(Asked(), std::make_pair(kMost, kRecords));
    question_.sort.clear();
    question_.group = Column::kCommand;
    EXPECT_EQ(Asked(), std::make_pair(kRecords, kMost));
    question_.group.reset();
    question_.selection.conditions = {{Column::kTime, "no such time", true, true}};
    EXPECT_EQ(Asked(), std::make_pair(kMost, kRecords));
    question_.selection.conditions = {{Column::kCommand, "no such command", false, true}};
    EXPECT_EQ(Asked(), std::make_pair(kRecords, kMost));
    question_.selection.conditions.clear();
    question_.most.reset();
    EXPECT_EQ(Asked(), std::make_pair(kRecords, kRecords));
}

}  // namespace
