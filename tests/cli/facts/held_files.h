// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_CLI_FACTS_HELD_FILES_H
#define VORN_TESTS_CLI_FACTS_HELD_FILES_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

/** A folder of files to hold, which goes with the test. */
class HeldFiles : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(mkdtemp(folder_.data()), nullptr); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    /** The path of a file in it; of the folder itself for an empty name. */
    std::string Path(const std::string& name) const {
        return name.empty() ? folder_ : folder_ + "/" + name;
    }
    /** Opens a file under a descriptor number of choice. */
    void OpenAs(int number, const std::string& name, int flags) const {
        const int opened = open(Path(name).c_str(), flags | O_CLOEXEC, 0600);
        EXPECT_GE(opened, 0) << name;
        if (opened != number) {
            EXPECT_EQ(dup3(opened, number, O_CLOEXEC), number);
            close(opened);
        }
    }

private:
    std::string folder_ = std::filesystem::temp_directory_path() / "vorn-facts-XXXXXX";
};

#endif
