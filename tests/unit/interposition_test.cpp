// SPDX-License-Identifier: MIT
#include <optional>

#include "tests/unit/support/pipeline_test.h"
#include "tests/unit/support/real_function.h"

/**
 * @file
 * The shared library as a program sees it that has symbols of its own: platform operations
 * (support/) and, here, two stages. The program's must win over what the library brings along or
 * is linked with. It is also the only way to a failure of these two stages, which have none.
 */

namespace {

struct Stage {
    std::optional<int> result; /**< instead of what the library's own function does */
    int calls = 0;
};

Stage eraseDuplicates;
Stage labelFolder;

int Run(Stage& stage, const char* libraryFunction, unit::Files& files) {
    ++stage.calls;
    using Function = int(std::list<VORN::FileHandle::OpenedFile>&);
    return stage.result ? *stage.result
                        : unit::Real(static_cast<Function*>(nullptr), libraryFunction)(files);
}

}  // namespace

namespace VORN {
namespace FileHandle {

int EraseAdjacentDuplicates(std::list<OpenedFile>& list) {
    return Run(eraseDuplicates,
               "_ZN4VORN10FileHandle23EraseAdjacentDuplicatesERNSt7__cxx114listINS0_"
               "10OpenedFileESaIS3_EEE",
               list);
}

int LabelFolder(std::list<OpenedFile>& list) {
    return Run(labelFolder,
               "_ZN4VORN10FileHandle11LabelFolderERNSt7__cxx114listINS0_10OpenedFileESaIS3_EEE",
               list);
}

}  // namespace FileHandle
}  // namespace VORN

using namespace VORN::FileHandle;
using ::testing::ElementsAre;

namespace {

class SharedLibrary : public unit::PipelineTest {
protected:
    void SetUp() override {
        PipelineTest::SetUp();
        eraseDuplicates = Stage();
        labelFolder = Stage();
    }
};

}  // namespace

TEST_F(SharedLibrary, CallsThePlatformAndTheStagesOfTheProgram) {
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(PidsAndPaths(),
                ElementsAre("10 docs/dir", "9 photo/@tmp/a", "10 photo/b", "9 photo/b"));
    EXPECT_TRUE(files.front().isFolder());
    EXPECT_EQ(eraseDuplicates.calls, 1);
    EXPECT_EQ(labelFolder.calls, 1);
    EXPECT_THAT(StagesRun(),
                ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle", "VORNCurConnGet",
                            "VORNEAHiddenDirGet", "KLIBCFileCheckDir"));
}

TEST_F(SharedLibrary, StopsWhenTheDuplicatesCannotBeErased) {
    eraseDuplicates.result = -1;
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to erase duplicate entries for file handle",
                       "filehandle_enum", 46));
    EXPECT_THAT(PidsAndPaths(), ElementsAre("10 docs/dir", "9 photo/@tmp/a", "10 photo/b",
                                            "9 photo/b", "9 photo/b"));
    EXPECT_THAT(StagesRun(),
                ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle", "VORNCurConnGet"));
}

TEST_F(SharedLibrary, StopsWhenFoldersCannotBeLabelled) {
    labelFolder.result = -1;
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to label folder for file handle", "filehandle_enum", 56));
    ASSERT_EQ(files.size(), 4U);
    EXPECT_TRUE(std::next(files.begin())->isHidden());
}

TEST_F(SharedLibrary, TakesResultsAboveZeroForSuccess) {
    eraseDuplicates.result = 1;
    labelFolder.result = 1;
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
}
