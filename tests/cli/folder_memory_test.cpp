// SPDX-License-Identifier: MIT
#include "cli/host/folder_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "vorn/platform/file.h"

namespace {

namespace fs = std::filesystem;

/** 1, 0 or -1 for each. */
std::vector<int> Tested(const std::vector<std::string>& paths) {
    std::vector<int> results;
    for (const std::string& path : paths) {
        results.push_back(std::max(-1, KLIBCFileCheckDir(path.c_str())));
    }
    return results;
}

TEST(FolderMemory, TellsWhatThePlatformTells) {
    const std::string top = testing::TempDir() + "/vorn-folders-" + std::to_string(getpid());
    fs::create_directories(top + "/a/b");
    fs::create_directories(top + "/c");
    std::ofstream(top + "/a/file") << "x";
    fs::create_symlink(top + "/a/b", top + "/a/to-folder");
    fs::create_symlink(top + "/a/file", top + "/a/to-file");
    fs::create_symlink(top + "/nowhere", top + "/a/to-nothing");
    const std::vector<std::string> paths = {top + "/a",
                                            top + "/a/b",
                                            top + "/a/b",
                                            top + "/a/b",
                                            top + "/a/file",
                                            top + "/a/file/below",
                                            top + "/a/gone",
                                            top + "/a/to-file",
                                            top + "/a/to-folder",
                                            top + "/a/to-nothing",
                                            top + "/c",
                                            top + "/gone/a",
                                            top + "/gone/b",
                                            top + "/gone/c",
                                            "/",
                                            "/",
                                            "/proc",
                                            "/tmp",
                                            "relative",
                                            "relative2",
                                            top + "/a/b",
                                            top + "/a/file",
                                            top + "/a/to-folder"};
    const std::vector<int> expected = Tested(paths);
    const cli::FolderMemory memory;
    EXPECT_EQ(Tested(paths), expected);
    fs::remove_all(top);
}

TEST(FolderMemory, TestsAPathAnewAfterAnother) {
    const std::string top = testing::TempDir() + "/vorn-anew-" + std::to_string(getpid());
    fs::create_directories(top + "/a");
    const cli::FolderMemory memory;
    EXPECT_EQ(Tested({top + "/a", top + "/b", top + "/a"}), (std::vector<int>{1, -1, 1}));
    fs::remove(top + "/a");
    EXPECT_EQ(Tested({top + "/b", top + "/a"}), (std::vector<int>{-1, -1}));
    fs::remove_all(top);
}

}  // namespace
