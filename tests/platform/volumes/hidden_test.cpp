// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/linux/shares/share_folders.h"
#include "platform/linux/volumes/hidden_list.h"
#include "tests/platform/support/log_capture.h"
#include "tests/platform/support/private_root.h"
#include "tests/platform/support/string_list.h"
#include "vorn/platform/error.h"
#include "vorn/platform/hidden.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(HiddenDirectories, AreTheLinesOfAListWithoutBlanksAndComments) {
    EXPECT_THAT(vornplatform::ParseHiddenList("/.a\n\n  \n# note\n  # note\n /b c \r\n/.last"),
                ElementsAre("/.a", "/b c", "/.last"));
    EXPECT_THAT(vornplatform::ParseHiddenList(""), IsEmpty());
}

TEST(HiddenDirectories, AreBuiltInWithoutAListOfTheAdministrator) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        StringList list;
        list.Push("old");
        const int count = VORNEAHiddenDirGet(list.Address());
        EXPECT_EQ(count, list.Get()->nItem - 1);
        for (const char* name :
             {"old", "/lost+found", "/.snapshot", "/.snapshots", "/.zfs", "/.recycle", "/.Trash-",
              "/.AppleDouble", "/.AppleDB", "/.TemporaryItems"}) {
            EXPECT_THAT(list.Texts(), Contains(name));
        }
        EXPECT_THAT(list.Texts(), testing::Not(Contains("")));
    });
}

TEST(HiddenDirectories, AreReplacedByTheListOfTheAdministrator) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteFile("/etc/vorn/hidden-directories", "# ours\n/.ours\n\n");
        StringList list;
        EXPECT_EQ(VORNEAHiddenDirGet(list.Address()), 1);
        EXPECT_THAT(list.Texts(), ElementsAre("/.ours"));
    });
}

TEST(HiddenDirectories, FailWhereTheListCannotBeRead) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        MakeFolder("/etc/vorn/hidden-directories");
        StringList list;
        EXPECT_LT(VORNEAHiddenDirGet(list.Address()), 0);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
        EXPECT_THAT(list.Texts(), IsEmpty());
        EXPECT_EQ(LoggedLines().size(), 1U);
    });
}

TEST(HiddenDirectories, AreNoShares) {
    const std::vector<std::string> hidden = {"/lost+found", "/tmp-"};
    for (const char* name : {".x", "@x", "lost+found", "tmp-1"}) {
        EXPECT_TRUE(vornplatform::IsHiddenFolder(name, hidden)) << name;
    }
    for (const char* name : {"photo", "x.y", "x@y", "tmp", "a lost+found"}) {
        EXPECT_FALSE(vornplatform::IsHiddenFolder(name, hidden)) << name;
    }
}
