// SPDX-License-Identifier: MIT
#include "cli/host/deleted.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace {

/** A folder with files that this very process holds open. */
class DeletedFilesTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(mkdtemp(folder_.data()), nullptr); }
    void TearDown() override {
        for (const int fd : descriptors_) {
            close(fd);
        }
        std::filesystem::remove_all(folder_);
    }

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }
    void Hold(const std::string& name) {
        const int fd = open(Path(name).c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        ASSERT_GE(fd, 0);
        descriptors_.push_back(fd);
    }
    bool IsDeleted(const std::string& name) {
        return cli::DeletedFiles().Contains(Path(name), std::to_string(getpid()));
    }

private:
    std::string folder_ = std::filesystem::temp_directory_path() / "vorn-deleted-XXXXXX";
    std::vector<int> descriptors_;
};

TEST_F(DeletedFilesTest, LeavesOrdinaryFilesAlone) {
    Hold("a");
    EXPECT_FALSE(IsDeleted("a"));
    EXPECT_FALSE(IsDeleted("never was"));
}

TEST_F(DeletedFilesTest, KnowsADeletedFile) {
    Hold("a");
    unlink(Path("a").c_str());
    EXPECT_TRUE(IsDeleted("a (deleted)"));
}

TEST_F(DeletedFilesTest, IsNotFooledByAName) {
    Hold("a (deleted)");
    EXPECT_FALSE(IsDeleted("a (deleted)"));
}

TEST_F(DeletedFilesTest, KnowsADeletedFileBesideOneOfThatName) {
    Hold("a");
    unlink(Path("a").c_str());
    {
        std::FILE* other = std::fopen(Path("a (deleted)").c_str(), "w");
        std::fclose(other);
    }
    EXPECT_TRUE(IsDeleted("a (deleted)"));
}

TEST_F(DeletedFilesTest, KnowsADeletedFileOfThatName) {
    Hold("a (deleted)");
    unlink(Path("a (deleted)").c_str());
    EXPECT_TRUE(IsDeleted("a (deleted) (deleted)"));
}

}  // namespace
