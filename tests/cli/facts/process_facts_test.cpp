// SPDX-License-Identifier: MIT
#include "cli/host/facts/process_facts.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <thread>

#include "cli/host/facts/user_names.h"
#include "tests/cli/facts/held_files.h"
#include "tests/platform/support/child.h"

namespace {

using cli::ProcessFacts;

/** A process that holds files in known ways, and what is known of it. */
class Holding : public HeldFiles {
protected:
    void Begin(const std::function<void()>& body) {
        child_ = std::make_unique<Child>(body);
        facts_ = ProcessFacts::Of(std::to_string(child_->Pid()));
        ASSERT_TRUE(facts_);
    }
    void End() { child_.reset(); }
    ProcessFacts& Facts() { return *facts_; }
    pid_t Pid() const { return child_->Pid(); }

    std::string ModeOf(int descriptor, const std::string& name) {
        const auto state = Facts().StateOf(descriptor, Path(name));
        return state ? cli::ModeName(*state) : "nothing";
    }

private:
    std::unique_ptr<Child> child_;
    std::optional<ProcessFacts> facts_;
};

TEST_F(Holding, HasAllDescriptorsOfAFile) {
    Begin([this] {
        OpenAs(100, "a", O_RDONLY | O_CREAT);
        OpenAs(9, "a", O_RDONLY);
        OpenAs(0, "a", O_RDONLY);
        OpenAs(50, "b", O_RDONLY | O_CREAT);
    });
    EXPECT_EQ(Facts().DescriptorsOf(Path("a")), (std::vector<int>{0, 9, 100}));
    EXPECT_EQ(Facts().DescriptorsOf(Path("b")), std::vector<int>{50});
    EXPECT_EQ(Facts().DescriptorsOf(Path("c")), std::vector<int>{});
}

TEST_F(Holding, HasAFileOpenInEachMode) {
    Begin([this] {
        OpenAs(50, "a", O_RDONLY | O_CREAT);
        OpenAs(51, "a", O_WRONLY);
        OpenAs(52, "a", O_RDWR);
        OpenAs(53, "a", O_WRONLY | O_APPEND);
        OpenAs(54, "a", O_RDWR | O_APPEND);
        OpenAs(55, "a", O_PATH);
        OpenAs(56, "", O_RDONLY | O_DIRECTORY);
    });
    EXPECT_EQ(ModeOf(50, "a"), "r");
    EXPECT_EQ(ModeOf(51, "a"), "w");
    EXPECT_EQ(ModeOf(52, "a"), "rw");
    EXPECT_EQ(ModeOf(53, "a"), "wa");
    EXPECT_EQ(ModeOf(54, "a"), "rwa");
    EXPECT_EQ(ModeOf(55, "a"), "-");
    EXPECT_EQ(ModeOf(56, ""), "r");
}

TEST_F(Holding, SaysNothingOfADescriptorThatLeadsElsewhere) {
    Begin([this] { OpenAs(50, "a", O_RDONLY | O_CREAT); });
    EXPECT_EQ(ModeOf(50, "b"), "nothing");
    EXPECT_EQ(ModeOf(51, "a"), "nothing");
    EXPECT_FALSE(Facts().FileOf(50, Path("b")));
    EXPECT_FALSE(Facts().FileOf(51, Path("a")));
}

TEST_F(Holding, NeverHasTheModeOfAnotherFileThatComesAndGoes) {
    Begin([this] {
        OpenAs(60, "a", O_RDONLY | O_CREAT);
        OpenAs(61, "b", O_WRONLY | O_CREAT);
        std::thread([] {
            for (;;) {
                dup3(60, 50, O_CLOEXEC);
                dup3(61, 50, O_CLOEXEC);
            }
        }).detach();
    });
    std::map<std::string, int> seen;
    while (seen["r"] < 500 || seen["nothing"] < 500) {
        ++seen[ModeOf(50, "a")];
        const auto file = Facts().FileOf(50, Path("a"));
        ASSERT_TRUE(!file || file->inode == Facts().FileOf(60, Path("a"))->inode);
    }
    EXPECT_EQ(seen.size(), 2U);
}

TEST_F(Holding, HasAFileAsItIs) {
    std::ofstream(Path("a")) << "content";
    const struct timespec times[] = {{1, 0}, {1709820309, 5}};
    ASSERT_EQ(utimensat(AT_FDCWD, Path("a").c_str(), times, 0), 0);
    Begin([this] { OpenAs(50, "a", O_RDONLY); });
    const auto file = Facts().FileOf(50, Path("a"));
    struct stat status {};
    ASSERT_EQ(stat(Path("a").c_str(), &status), 0);
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->regular);
    EXPECT_EQ(file->size, 7U);
    EXPECT_EQ(file->space, static_cast<std::uint64_t>(status.st_blocks) * 512);
    EXPECT_EQ(file->modified, 1709820309);
    EXPECT_EQ(file->inode, status.st_ino);
    EXPECT_EQ(file->device, status.st_dev);
}

TEST_F(Holding, HasTheSpaceOfASparseFile) {
    std::ofstream(Path("a")) << "some bytes";
    ASSERT_EQ(truncate(Path("a").c_str(), off_t{1} << 40), 0);
    Begin([this] { OpenAs(50, "a", O_RDONLY); });
    const auto file = Facts().FileOf(50, Path("a"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->size, std::uint64_t{1} << 40);
    EXPECT_LT(file->space, std::uint64_t{1} << 20);
}

TEST_F(Holding, HasADeletedFileThoughAnotherHasItsName) {
    std::ofstream(Path("a")) << std::string(100'000, 'x');
    struct stat status {};
    ASSERT_EQ(stat(Path("a").c_str(), &status), 0);
    Begin([this] { OpenAs(50, "a", O_WRONLY | O_APPEND); });
    unlink(Path("a").c_str());
    std::ofstream(Path("a")) << "another";
    std::ofstream(Path("a (deleted)")) << "a third";
    EXPECT_EQ(Facts().DescriptorsOf(Path("a (deleted)")), std::vector<int>{50});
    EXPECT_EQ(Facts().DescriptorsOf(Path("a")), std::vector<int>{});
    EXPECT_EQ(ModeOf(50, "a (deleted)"), "wa");
    const auto file = Facts().FileOf(50, Path("a (deleted)"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->inode, status.st_ino);
    EXPECT_EQ(file->size, 100'000U);
    EXPECT_GE(file->space, 100'000U);
}

TEST_F(Holding, HasAFolderThatIsNoFile) {
    Begin([this] { OpenAs(50, "", O_RDONLY | O_DIRECTORY); });
    const auto file = Facts().FileOf(50, Path(""));
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->regular);
}

TEST_F(Holding, OpensNothingOfAFifo) {
    ASSERT_EQ(mkfifo(Path("a").c_str(), 0600), 0);
    Begin([this] { OpenAs(50, "a", O_RDWR); });
    const auto file = Facts().FileOf(50, Path("a"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->regular);
    EXPECT_EQ(ModeOf(50, "a"), "rw");
}

TEST_F(Holding, HasTheNameOfItsProcess) {
    Begin([] { prctl(PR_SET_NAME, "a) b\nc"); });
    EXPECT_EQ(Facts().Command(), "a) b\nc");
}

TEST_F(Holding, HasTheUserAsWhomItsProcessActs) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root to be another user";
    }
    Begin([] { EXPECT_EQ(setresuid(0, 65534, 0), 0); });
    EXPECT_EQ(Facts().Owner(), 65534U);
    cli::UserNames names;
    EXPECT_EQ(names.Of(65534), "nobody");
    EXPECT_EQ(names.Of(0), "root");
    EXPECT_EQ(names.Of(3999999999), "3999999999");
}

TEST_F(Holding, HasTheLoginOfItsProcess) {
    if (access("/proc/self/loginuid", W_OK) != 0) {
        GTEST_SKIP() << "needs root and a kernel that keeps a record of logins (CONFIG_AUDIT)";
    }
    Begin([] { std::ofstream("/proc/self/loginuid") << 4294967295; });
    EXPECT_EQ(Facts().Login(), std::nullopt);
    Begin([] {
        std::ofstream("/proc/self/loginuid") << 4294967295;
        std::ofstream("/proc/self/loginuid") << 5001;
    });
    EXPECT_EQ(Facts().Login(), 5001U);
}

TEST_F(Holding, HasTheUnitOfItsProcess) {
    Begin([] {});
    std::ifstream own("/proc/self/cgroup");
    const std::string text((std::istreambuf_iterator<char>(own)), {});
    EXPECT_EQ(Facts().Unit().value_or(""), cli::UnitOf(text));
}

TEST_F(Holding, HasTheTimeThatItsProcessHasStartedAt) {
    const cli::BootTicks before = cli::BootTicksNow();
    const std::time_t earliest = std::time(nullptr);
    Begin([] {});
    const std::time_t latest = std::time(nullptr);
    EXPECT_FALSE(Facts().HasStartedBefore(before));
    EXPECT_TRUE(Facts().HasStartedBefore(cli::BootTicksNow() + 1));
    EXPECT_GE(Facts().Started(), earliest - 1);  // ticks are cut off
    EXPECT_LE(Facts().Started(), latest);
}

TEST_F(Holding, HasNothingOnceItsProcessHasEnded) {
    Begin([this] { OpenAs(50, "a", O_RDONLY | O_CREAT); });
    End();
    EXPECT_EQ(Facts().Command(), std::nullopt);
    EXPECT_EQ(Facts().Owner(), std::nullopt);
    EXPECT_EQ(Facts().Login(), std::nullopt);
    EXPECT_EQ(Facts().Unit(), std::nullopt);
    EXPECT_EQ(Facts().DescriptorsOf(Path("a")), std::vector<int>{});
    EXPECT_FALSE(Facts().StateOf(50, Path("a")));
    EXPECT_FALSE(Facts().FileOf(50, Path("a")));
}

TEST(ProcessFactsOf, NothingThatIsNoProcess) {
    for (const char* pid : {"", "0", "-1", "self", "1x", "../1", "2147483647", "99999999999"}) {
        EXPECT_FALSE(ProcessFacts::Of(pid)) << pid;
    }
}

}  // namespace
