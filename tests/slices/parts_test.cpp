// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "slices/named_slices.h"
#include "slices/trouble.h"
#include "slices/unified_groups.h"

namespace {

using slices::Names;

TEST(NamedSlice, HasASectionWithAName) {
    const std::pair<const char*, bool> kCases[] = {
        {"[Unit]\nDescription=x\n[X-Vornalis]\nName=SSH\nNameI18n=service:ssh\n", true},
        {"[X-Vornalis]\nName=SSH", true},
        {"[X-Vornalis]\nNameI18n=service:ssh", true},
        {"[X-Vornalis]\n", false},
        {"[X-Vornalis]\nName=\n", false},
        {"#[X-Vornalis]\nName=SSH\n", false},
        {"[Unit]\nDescription=[X-Vornalis]\nName=SSH\n", false},
        {"[Unit]\nName=SSH\n", false},
        {"", false},
    };
    for (const auto& [text, names] : kCases) {
        EXPECT_EQ(slices::NamesService(text), names) << text;
    }
}

class UnitFolders : public testing::Test {
protected:
    UnitFolders() {
        std::string path = testing::TempDir() + "unitsXXXXXX";
        top_ = mkdtemp(path.data());
        for (const char* name : {"/local", "/usr"}) {
            std::filesystem::create_directory(top_ + name);
        }
    }
    ~UnitFolders() override { std::filesystem::remove_all(top_); }

    void Write(const std::string& name, const char* text) const {
        std::ofstream(top_ + name) << text;
    }
    Names Find() const {
        return slices::FindNamedSlices({top_ + "/local", top_ + "/none", top_ + "/usr"});
    }

    std::string top_;
};

TEST_F(UnitFolders, HaveTheSlicesThatNameServices) {
    Write("/usr/a.slice", "[X-Vornalis]\nName=A\n");
    Write("/local/b.slice", "[X-Vornalis]\nName=B\n");
    Write("/usr/plain.slice", "[Unit]\n");
    Write("/usr/c.service", "[X-Vornalis]\nName=C\n");
    Write("/usr/d.slice.bak", "[X-Vornalis]\nName=D\n");
    EXPECT_EQ(Find(), (Names{"a.slice", "b.slice"}));
}

TEST_F(UnitFolders, HideFilesOfLaterOnes) {
    Write("/usr/a.slice", "[X-Vornalis]\nName=A\n");
    Write("/local/a.slice", "[Unit]\n");
    Write("/usr/b.slice", "[X-Vornalis]\nName=B\n");
    std::filesystem::create_symlink("/dev/null", top_ + "/local/b.slice");
    EXPECT_EQ(Find(), Names());
}

TEST(Members, AreNumbersOfProcessesThatCanBeSeen) {
    EXPECT_EQ(slices::ParseMembers("1\n4194304\n0\nx\n-5\n12"),
              (std::vector<pid_t>{1, 4194304, 12}));
    EXPECT_TRUE(slices::ParseMembers("").empty());
    EXPECT_TRUE(slices::MembersOf("/nowhere").empty());
}

TEST(Group, IsOfInterestInANamedSliceAndOnTheWayToASession) {
    const Names named = {"sshd.slice"};
    const std::pair<const char*, bool> kCases[] = {
        {"sshd.slice", true},
        {"sshd.slice/ssh.service", true},
        {"sshd.slice/ssh.service/a/b", true},
        {"sshd.slice2", false},
        {"system.slice", false},
        {"system.slice/sshd.slice", false},
        {"", false},
        {"user.slice", true},
        {"user.slice/user-1000.slice", true},
        {"user.slice/user-1000.slice/session-7.scope", true},
        {"user.slice/user-1000.slice/session-7.scope/below", true},
        {"user.slice/user-1000.slice/user@1000.service", false},
        {"user.slice/user-1000.slice/user@1000.service/app.slice", false},
        {"user.slice/user-1000.slice/user-x.slice", false},
        {"user.slice/other.scope", false},
    };
    for (const auto& [group, isOfInterest] : kCases) {
        EXPECT_EQ(slices::IsOfInterest(group, named), isOfInterest) << group;
    }
    EXPECT_TRUE(slices::IsOfInterest("user.slice/user-1.slice/user@1.service", {"user.slice"}));
}

TEST(Trouble, IsSaidOnceUntilItIsOver) {
    slices::Troubles troubles;
    testing::internal::CaptureStderr();
    troubles.Report("a", "first");
    troubles.Report("a", "second");
    troubles.Report("b", "other");
    troubles.Over("a");
    troubles.Over("c");
    troubles.Report("a", "third");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said.find("second"), std::string::npos);
    for (const char* each : {"first", "other", "third"}) {
        EXPECT_NE(said.find(std::string("vorn-slices: ") + each + "\n"), std::string::npos) << said;
    }
}

}  // namespace
