// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/shares/nfs_exports.h"
#include "platform/linux/shares/samba_dump.h"
#include "platform/linux/shares/share_table.h"
#include "platform/linux/support/lost_sources.h"
#include "tests/platform/support/log_capture.h"
#include "tests/platform/support/private_root.h"
#include "tests/platform/support/scripted_calls.h"
#include "tests/platform/support/string_list.h"
#include "vorn/platform/error.h"
#include "vorn/platform/share.h"

namespace {

using namespace std::string_view_literals;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Pairs = std::vector<std::pair<std::string, std::string>>;

constexpr char kTestparm[] = "/usr/bin/testparm";
constexpr char kConfig[] = "/etc/samba/smb.conf";

Pairs ToPairs(const std::vector<vornplatform::Share>& shares) {
    Pairs pairs;
    for (const auto& share : shares) {
        pairs.emplace_back(share.name, share.path);
    }
    return pairs;
}

/** As the library asks for them. */
Pairs ListedShares() {
    StringList names;
    Pairs pairs;
    EXPECT_EQ(VORNShareEnum(names.Address(), VORN_SHARE_ALL), names.Get()->nItem);
    VORN_SHARE* share = nullptr;
    for (const std::string& name : names.Texts()) {
        EXPECT_EQ(VORNShareGet(name.c_str(), &share), 0) << name;
        pairs.emplace_back(name, share->szPath);
    }
    return pairs;
}

/** Puts a program in testparm's place that notes each of its runs. */
void ReplaceTestparm(const std::string& script) {
    WriteFile("/tmp/testparm", "#!/bin/sh\necho >> /tmp/runs\n" + script);
    ASSERT_EQ(chmod("/tmp/testparm", 0755), 0);
    ASSERT_EQ(mount("/tmp/testparm", kTestparm, "none", MS_BIND, ""), 0);
}

long Runs() {
    struct stat info;
    return stat("/tmp/runs", &info) == 0 ? static_cast<long>(info.st_size) : 0;
}

#define SKIP_WITHOUT_SAMBA()          \
    SKIP_WITHOUT_MOUNTS();            \
    if (access(kTestparm, X_OK) != 0) \
    GTEST_SKIP() << "needs testparm (package samba-common-bin)"

}  // namespace

TEST(SharePath, IsNormalAndOnAVolume) {
    const std::string longest = "/volume1/" + std::string(4086, 'a');
    const std::pair<std::string, std::string> rows[] = {
        {"/volume1/photo", "/volume1/photo"},
        {"/volume1/photo//", "/volume1/photo"},
        {"/volume1/", "/volume1"},
        {"/volume1", "/volume1"},
        {"//volume1//a/./b/", "/volume1/a/b"},
        {"/volume1/../etc", ""},
        {"/mnt/../volume1/a", "/volume1/a"},
        {"/volume", ""},
        {"/volume/a", ""},
        {"volume1/a", ""},
        {"/srv/a", ""},
        {"", ""},
        {"/volume1/%U", ""},
        {std::string("/volume1/a\0b", 12), ""},
        {longest, longest},
        {longest + "a", ""},
    };
    for (const auto& [path, expected] : rows) {
        EXPECT_EQ(vornplatform::SharePath(path), expected) << path;
    }
}

TEST(ShareTable, KeepsBothSharesOfOneNameUnderDistinctNames) {
    const vornplatform::ShareTable table({{"a", "/1"}, {"a", "/2"}, {"a (2)", "/3"}, {"a", "/4"}});
    EXPECT_THAT(ToPairs(table.Shares()), ElementsAre(Pair("a", "/1"), Pair("a (2)", "/2"),
                                                     Pair("a (2) (2)", "/3"), Pair("a (3)", "/4")));
    ASSERT_NE(table.Find("a (3)"), nullptr);
    EXPECT_EQ(table.Find("a (3)")->path, "/4");
    EXPECT_EQ(table.Find("b"), nullptr);
}

TEST(SambaDump, GivesTheSharesWithTheirPathsAsTheyAreWritten) {
    const auto dump = vornplatform::ParseSambaDump(
        "# Global parameters\n[global]\n\tserver role = standalone server\n\n"
        "[homes]\n\tpath = /volume1/homes\n[printers]\n\tpath = /volume1/spool\n"
        "[print$]\n\tpath = /volume1/drivers\n[laser]\n"
        "\tpath = /volume1/laser\n\tprintable = Yes\n[off]\n\tavailable = No\n"
        "\tpath = /volume1/off\n[user]\n\tpath = /volume1/%U\n[srv]\n\tpath = /srv/x\n"
        "[none]\n\tcomment = path\n[My Photos]\n\tcomment = a = b\n\tpath = /volume1/my photos/\n"
        "[root]\n\tpath = /volume2");
    ASSERT_TRUE(dump);
    EXPECT_THAT(ToPairs(dump->shares),
                ElementsAre(Pair("srv", "/srv/x"), Pair("My Photos", "/volume1/my photos"),
                            Pair("root", "/volume2")));
    EXPECT_EQ(dump->usershareFolder, "/var/lib/samba/usershares");
}

TEST(SambaDump, SaysWhereUsersharesAre) {
    const std::pair<const char*, const char*> rows[] = {
        {"[global]\n\tusershare path = /srv/us\n", "/srv/us"},
        {"[global]\n\tusershare max shares = 0\n\tusershare path = /srv/us\n", ""},
        {"[global]\n\tusershare max shares = 10\n", "/var/lib/samba/usershares"},
        {"[global]\n[a]\n\tusershare path = /srv/us\n", "/var/lib/samba/usershares"},
    };
    for (const auto& [text, folder] : rows) {
        const auto dump = vornplatform::ParseSambaDump(text);
        ASSERT_TRUE(dump) << text;
        EXPECT_EQ(dump->usershareFolder, folder) << text;
    }
}

TEST(SambaDump, IsNothingForAnotherText) {
    for (const std::string_view text :
         {""sv, "Segmentation fault"sv, "[a]\n\tpath = /volume1/a\n"sv, "\n\n\xff["sv,
          "[global]\n[a\0b]\n\tpath = /volume1/a\n"sv}) {
        EXPECT_FALSE(vornplatform::ParseSambaDump(text)) << text;
    }
}

TEST(SambaConfig, NamesTheFilesThatItIncludes) {
    EXPECT_THAT(vornplatform::IncludedFiles("[global]\n include = /etc/samba/a.conf\n"
                                            "# include = /no\n; include = /no\n"
                                            "include=registry\ninclude = /etc/smb.%m\n"
                                            "In Clude = \"/etc/b c\"\nconfig file = /etc/d\n"),
                ElementsAre("/etc/samba/a.conf", "/etc/b c", "/etc/d"));
}

TEST(Usershare, IsReadFromItsFile) {
    const std::string body = "path=/volume1/pub/\ncomment=\nusershare_acl=S-1-1-0:R\nguest_ok=n\n";
    const auto first = vornplatform::ParseUsershare("pub", "#VERSION 1\n" + body);
    ASSERT_TRUE(first);
    EXPECT_THAT(ToPairs({*first}), ElementsAre(Pair("pub", "/volume1/pub")));
    const auto second =
        vornplatform::ParseUsershare("pub", "#VERSION 2\n" + body + "sharename=Pub");
    ASSERT_TRUE(second);
    EXPECT_EQ(second->name, "Pub");
    for (const char* text : {"", "path=/volume1/a\n", "#VERSION 9\npath=/volume1/a\n",
                             "#VERSION 2\npath=%U\n", "#VERSION 2\n"}) {
        EXPECT_FALSE(vornplatform::ParseUsershare("a", text)) << text;
    }
}

TEST(NfsExports, GiveFoldersNamedByTheirLastElement) {
    EXPECT_THAT(
        ToPairs(vornplatform::ParseExports(
            "# /volume1/no *(rw)\n\n/volume1/a *(rw)\n  /volume1/b/\t10.0.0.0/8(ro)\n"
            "\"/volume1/with blank\" *(rw)\n/volume1/oct\\040al *\n/srv/x *(rw)\n"
            "/volume2 *(rw) \\\n /volume1/host(rw)\n/volume1/alone\n/volume1/has#hash *\n"
            "/volume1/back\\9slash *\n/volume1/\\000nul *\n/volume1/last \\")),
        ElementsAre(Pair("a", "/volume1/a"), Pair("b", "/volume1/b"),
                    Pair("with blank", "/volume1/with blank"), Pair("oct al", "/volume1/oct al"),
                    Pair("x", "/srv/x"), Pair("volume2", "/volume2"),
                    Pair("alone", "/volume1/alone"), Pair("has#hash", "/volume1/has#hash"),
                    Pair("back\\9slash", "/volume1/back\\9slash"), Pair("last", "/volume1/last")));
}

TEST(Shares, AreTopLevelFoldersWhereTheHostExportsNothing) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        for (const char* folder : {"/volume1/photo/inner", "/volume1/music", "/volume2/photo",
                                   "/volume1/lost+found", "/volume1/.x", "/volume1/@x"}) {
            MakeFolder(folder);
        }
        WriteFile("/volume1/file", "");
        KLIBCErrSetEx(0, "", 0);
        EXPECT_THAT(ListedShares(),
                    ElementsAre(Pair("music", "/volume1/music"), Pair("photo", "/volume1/photo"),
                                Pair("photo (2)", "/volume2/photo")));
        EXPECT_EQ(KLIBCErrGet(), 0);
        EXPECT_THAT(LoggedLines(), IsEmpty());
    });
}

TEST(Shares, AreNoneOfAVolumeThatCannotBeListedToItsEnd) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        MakeFolder("/volume1/photo");
        Calls().getdents64.failFrom = 2;
        Calls().getdents64.error = EIO;
        EXPECT_THAT(ListedShares(), IsEmpty());
        EXPECT_THAT(LoggedLines(), ElementsAre(testing::HasSubstr("list the volume /volume1"),
                                               testing::HasSubstr("list the volume /volume2")));
    });
}

TEST(Shares, SayWhichFolderOfExportsCannotBeListedToItsEnd) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteFile("/etc/exports", "/volume1/a *\n");
        WriteFile("/etc/exports.d/x.exports", "/volume2/x *\n");
        Calls().getdents64.failFrom = 2;
        Calls().getdents64.error = EIO;
        EXPECT_THAT(ListedShares(), ElementsAre(Pair("a", "/volume1/a")));
        EXPECT_THAT(LoggedLines(), ElementsAre(testing::HasSubstr("list /etc/exports.d")));
    });
}

TEST(Shares, AreNoneWithoutVolumesAndFoldersAndThatIsNoFailure) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] { EXPECT_THAT(ListedShares(), IsEmpty()); });
}

TEST(Shares, AreReadFromNfsFilesAndFollowTheirChanges) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        MakeFolder("/volume1/unexported");
        WriteFile("/etc/exports", "/volume1/a 10.0.0.1(rw)\n/volume1/a 10.0.0.2(ro)\n/srv *\n");
        WriteFile("/etc/exports.d/x.exports", "/volume2/a *\n");
        WriteFile("/etc/exports.d/x.bak", "/volume2/bak *\n");
        EXPECT_THAT(ListedShares(),
                    ElementsAre(Pair("a", "/volume1/a"), Pair("a (2)", "/volume2/a")));
        WriteFile("/etc/exports", "/volume1/longer/path *\n");
        EXPECT_THAT(ListedShares(),
                    ElementsAre(Pair("path", "/volume1/longer/path"), Pair("a", "/volume2/a")));
        WriteFile("/etc/exports.d/y.exports", "/volume2/y *\n");
        EXPECT_EQ(ListedShares().size(), 3U);
    });
}

TEST(Shares, LieWhereTheirLinksLeadAndFollowThem) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        for (const char* folder : {"/volume1/data/photo", "/volume2/music", "/srv/local"}) {
            MakeFolder(folder);
        }
        ASSERT_EQ(symlink("data/photo", "/volume1/photo"), 0);
        ASSERT_EQ(symlink("/volume1/photo", "/srv/photo"), 0);
        ASSERT_EQ(symlink("/srv/local", "/volume1/local"), 0);
        ASSERT_EQ(symlink("/volume2", "/srv/two"), 0);
        WriteFile("/etc/exports",
                  "/srv/photo *\n/volume1/photo/ *\n/volume1/local *\n/srv/two/music *\n"
                  "/srv/two/not/there *\n/volume1/gone/x *\n/volume1/./data/../data/photo *\n");
        EXPECT_THAT(
            ListedShares(),
            ElementsAre(Pair("photo", "/volume1/data/photo"),
                        Pair("photo (2)", "/volume1/data/photo"), Pair("music", "/volume2/music"),
                        Pair("x", "/volume1/gone/x"), Pair("photo (3)", "/volume1/data/photo")));
        // A folder above becomes another one, and no file of the configuration has changed.
        ASSERT_EQ(unlink("/srv/two"), 0);
        ASSERT_EQ(symlink("/volume1/data", "/srv/two"), 0);
        EXPECT_THAT(ListedShares(), testing::Contains(Pair("music", "/volume1/data/music")));
        EXPECT_THAT(LoggedLines(), IsEmpty());
    });
}

TEST(Shares, CannotBeHadWithoutAMountTable) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        MakeFolder("/volume1/photo");
        ASSERT_EQ(mount("tmpfs", "/proc", "tmpfs", 0, ""), 0);
        StringList names;
        KLIBCErrSetEx(0, "", 0);
        EXPECT_LT(VORNShareEnum(names.Address(), VORN_SHARE_ALL), 0);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_NOT_FOUND);
        EXPECT_THAT(names.Texts(), IsEmpty());
        const auto losses = vornplatform::LostSources();
        ASSERT_EQ(losses.size(), 1U);
        EXPECT_THAT(losses[0].text, testing::HasSubstr("mount table"));
        ASSERT_EQ(umount("/proc"), 0);
        EXPECT_THAT(ListedShares(), ElementsAre(Pair("photo", "/volume1/photo")));
        EXPECT_TRUE(vornplatform::LostSources().empty());
    });
}

TEST(Shares, AreReadFromSambaWithIncludesAndUsershares) {
    SKIP_WITHOUT_SAMBA();
    InPrivateRoot([] {
        WriteFile(kConfig,
                  "[global]\n include = /etc/samba/more.conf\n[photo]\n"
                  " path = /volume1/photo\n[homes]\n path = /volume1/%U\n");
        WriteFile("/etc/samba/more.conf", "[Docs]\n path = /volume2/docs/\n");
        WriteFile("/var/lib/samba/usershares/pub", "#VERSION 2\npath=/volume1/pub\n");
        WriteFile("/etc/exports", "/volume2/photo *\n");
        EXPECT_THAT(ListedShares(),
                    testing::UnorderedElementsAre(
                        Pair("photo", "/volume1/photo"), Pair("Docs", "/volume2/docs"),
                        Pair("pub", "/volume1/pub"), Pair("photo (2)", "/volume2/photo")));
        WriteFile("/etc/samba/more.conf", "[Documents]\n path = /volume2/documents\n");
        EXPECT_THAT(ListedShares(), testing::Contains(Pair("Documents", "/volume2/documents")));
        EXPECT_THAT(LoggedLines(), IsEmpty());
    });
}

TEST(Shares, StayWhateverElseIsInTheUsershareFolder) {
    SKIP_WITHOUT_SAMBA();
    InPrivateRoot([] {
        const std::string folder = "/var/lib/samba/usershares/";
        const std::string good = "#VERSION 2\npath=/volume1/";
        WriteFile(kConfig, "[photo]\n path = /volume1/photo\n");
        WriteFile(folder + "a-good", good + "first\n");
        WriteFile(folder + "c-large", good + "large\n" + std::string(2 << 20, '#'));
        MakeFolder(folder + "d-folder");
        WriteFile(folder + "z-good", good + "last\n");
        // Nobody ever writes to it: a reader that waits would wait for good.
        ASSERT_EQ(mkfifo((folder + "b-fifo").c_str(), 0666), 0);
        ASSERT_EQ(symlink("/dev/zero", (folder + "e-endless").c_str()), 0);
        EXPECT_THAT(ListedShares(),
                    ElementsAre(Pair("photo", "/volume1/photo"), Pair("a-good", "/volume1/first"),
                                Pair("z-good", "/volume1/last")));
    });
}

TEST(Shares, AskTestparmOnceUntilAFileChanges) {
    SKIP_WITHOUT_SAMBA();
    InPrivateRoot([] {
        WriteFile(kConfig, "include = /etc/samba/more.conf\n");
        ReplaceTestparm("[ \"$*\" = -s ] && printf '[global]\\n[a]\\n\\tpath = /volume1/a\\n'");
        for (int i = 0; i < 5; ++i) {
            EXPECT_THAT(ListedShares(), ElementsAre(Pair("a", "/volume1/a")));
        }
        EXPECT_EQ(Runs(), 1);
        long runs = 1;
        for (const char* changed : {kConfig, "/etc/samba/more.conf", "/var/lib/samba/registry.tdb",
                                    "/var/lib/samba/usershares/x"}) {
            WriteFile(changed, "include = /etc/samba/more.conf\n#\n");
            ListedShares();
            EXPECT_EQ(Runs(), ++runs) << changed;
        }
        WriteFile("/var/lib/samba/usershares/x", "#VERSION 2\npath=/volume1/x\n");
        EXPECT_EQ(ListedShares().size(), 2U);
    });
}

TEST(Shares, LeaveSambaOutWithOneLogLineWhereTestparmFails) {
    SKIP_WITHOUT_SAMBA();
    for (const char* script :
         {"exec sleep 100", "exit 1", "printf 'non\\033sense'", "yes", "kill $$"}) {
        InPrivateRoot([script] {
            WriteFile(kConfig, "[global]\n");
            WriteFile("/etc/exports", "/volume2/nfs *\n");
            ReplaceTestparm(script);
            EXPECT_THAT(ListedShares(), ElementsAre(Pair("nfs", "/volume2/nfs"))) << script;
            EXPECT_THAT(ListedShares(), ElementsAre(Pair("nfs", "/volume2/nfs"))) << script;
            EXPECT_EQ(Runs(), 1) << script;
            ASSERT_EQ(LoggedLines().size(), 1U) << script;
            EXPECT_THAT(LoggedLines()[0], testing::HasSubstr("testparm")) << script;
            ASSERT_EQ(vornplatform::LostSources().size(), 1U) << script;
            EXPECT_THAT(vornplatform::LostSources()[0].text, testing::HasSubstr("testparm"));
            EXPECT_EQ(LoggedLines()[0].find('\033'), std::string::npos);
        });
    }
}

TEST(Shares, AreLookedUpByNameOrNotFound) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        MakeFolder("/volume1/photo");
        VORN_SHARE* share = nullptr;
        EXPECT_EQ(VORNShareGet("photo", &share), 0);  // before any enumeration
        ASSERT_NE(share, nullptr);
        EXPECT_STREQ(share->szPath, "/volume1/photo");
        VORN_SHARE* const before = share;
        EXPECT_LT(VORNShareGet("Photo", &share), 0);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_NOT_FOUND);
        EXPECT_EQ(share, before);
        EXPECT_LT(VORNShareGet(nullptr, &share), 0);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
        EXPECT_LT(VORNShareEnum(nullptr, VORN_SHARE_ALL), 0);
    });
}

TEST(Shares, CostNothingWhenNobodyReleasesTheRecords) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteFile("/etc/exports", "/volume1/a *\n/volume1/b *\n");
        ListedShares();
        const size_t before = mallinfo2().uordblks;
        for (int i = 0; i < 10000; ++i) {
            ASSERT_EQ(ListedShares().size(), 2U);
        }
        EXPECT_LE(mallinfo2().uordblks, before + 4096);
    });
}
