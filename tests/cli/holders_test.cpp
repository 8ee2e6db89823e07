// SPDX-License-Identifier: MIT
// What the sources of reasons read, text by text.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include "cli/answer/busy.h"
#include "cli/question/holders/memory_map.h"
#include "cli/question/holders/mount_table.h"
#include "cli/question/holders/nfs_clients.h"
#include "cli/question/holders/nfs_exports.h"
#include "cli/question/holders/nfs_locks.h"
#include "cli/question/holders/process_facts.h"
#include "cli/question/holders/swap_files.h"
#include "cli/text/number_text.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MountTable, ReadsALine) {
    const auto mount = cli::ParseMount(
        "36 35 253:300 /a\\040b /mnt\\011x\\134 rw,noatime shared:7 master:1 - btrfs /dev/root rw");
    ASSERT_TRUE(mount);
    EXPECT_EQ(mount->id, 36U);
    EXPECT_EQ(mount->parent, 35U);
    EXPECT_EQ(mount->device, makedev(253, 300));
    EXPECT_EQ(mount->root, "/a b");
    EXPECT_EQ(mount->point, "/mnt\tx\\");
    EXPECT_EQ(mount->type, "btrfs");
    EXPECT_EQ(mount->groups, "shared:7 master:1");
}

TEST(MountTable, KnowsWhatIsNoLine) {
    for (const char* line :
         {"", "36", "36 35 8 / /mnt rw - ext4 x rw", "36 35 8:1 / /mnt rw shared:7",
          "x 35 8:1 / /mnt rw - ext4 x rw", "36 35 8:1 /"}) {
        EXPECT_FALSE(cli::ParseMount(line)) << line;
    }
}

TEST(MountTable, PutsARootBeforeMountPoints) {
    cli::MountTable table;
    table.Add("36 35 8:1 / /data rw - ext4 x rw\n", "/srv/jail", false);
    table.Add("36 35 8:2 / /other rw - ext4 x rw\n37 35 8:1 /b / rw - ext4 x rw\n", "/", true);
    EXPECT_EQ(table.Find(36)->point, "/srv/jail/data");
    EXPECT_EQ(table.Find(37)->point, "/");
    EXPECT_EQ(table.Find(38), nullptr);
}

TEST(MountTable, TellsAPathWithinTheFileSystem) {
    struct Case {
        const char* root;
        const char* point;
        const char* text;
        const char* inside;
    };
    for (const Case& each :
         {Case{"/", "/volume1", "/volume1/a/b", "/a/b"}, Case{"/", "/volume1", "/volume1", "/"},
          Case{"/", "/", "/a", "/a"}, Case{"/", "/", "/", "/"},
          Case{"/photo", "/jail", "/jail/a", "/photo/a"},
          Case{"/photo", "/jail", "/jail", "/photo"}, Case{"/photo", "/", "/a", "/photo/a"},
          Case{"/", "/volume1", "/volume10/a", nullptr}, Case{"/", "/volume1", "/a", nullptr}}) {
        cli::Mount mount;
        mount.root = each.root;
        mount.point = each.point;
        const auto inside = cli::PathInside(mount, each.text);
        EXPECT_EQ(inside.value_or("none"), each.inside == nullptr ? "none" : each.inside)
            << each.text;
    }
}

TEST(MemoryMap, ReadsALine) {
    const auto mapped = cli::ParseMapped(
        "00400000-00452000 r-xp 00000000 08:02 173521      /usr/bin/a b\\012c (deleted)");
    ASSERT_TRUE(mapped);
    EXPECT_EQ(mapped->LinkName(), "400000-452000");
    EXPECT_EQ(mapped->device, makedev(8, 2));
    EXPECT_EQ(mapped->inode, 173521U);
    EXPECT_EQ(mapped->path, "/usr/bin/a b\\012c (deleted)");
    EXPECT_EQ(cli::ParseMapped("1-2 r-xp 00000000 fd:12c 7 /x")->device, makedev(253, 300));
}

TEST(MemoryMap, KnowsMemoryWithoutAFile) {
    for (const char* line : {"", "x", "00400000-00452000 rw-p 00000000 00:00 0",
                             "1-2 rw-p 0 00:00 0      [heap]", "1-2 rw-p 0 zz:00 0"}) {
        EXPECT_FALSE(cli::ParseMapped(line)) << line;
    }
}

TEST(SwapFiles, AreNoDevices) {
    EXPECT_THAT(
        cli::ParseSwapFiles("Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n"
                            "/dev/dm-1                               partition\t8\t\t0\t\t-2\n"
                            "/volume3/a\\040b                         file\t\t16368\t\t0\t\t-3\n"
                            "/volume3/" +
                            std::string(60, 'x') + " file\t\t16368\t\t0\t\t-4\n"),
        ElementsAre("/volume3/a b", "/volume3/" + std::string(60, 'x')));
    EXPECT_THAT(cli::ParseSwapFiles(""), IsEmpty());
}

TEST(NfsExports, HavePathAndClients) {
    const auto exports = cli::ParseNfsExports(
        "# Version 1.1\n# Path Client(Flags) # IPs\n"
        "/volume1/my\\040photos\t10.0.0.0/8(rw,sync,uuid=1:2)\n/volume2\t*(ro)\n");
    ASSERT_EQ(exports.size(), 2U);
    EXPECT_EQ(exports[0].path, "/volume1/my photos");
    EXPECT_EQ(exports[0].clients, "10.0.0.0/8");
    EXPECT_EQ(exports[1].clients, "*");
}

TEST(NfsClient, HasAHostAndAKey) {
    const auto client = cli::ParseNfsClient(
        "clientid: 0x83aef02b6b0185b4\naddress: \"10.9.2.2:764\"\nstatus: confirmed\n"
        "name: \"x\"\naddress: \"6.6.6.6:6\"\n");
    ASSERT_TRUE(client);
    EXPECT_EQ(client->host, "10.9.2.2");
    EXPECT_EQ(client->stateKey, "b485016b2bf0ae83");
    EXPECT_EQ(cli::ParseNfsClient("clientid: 0x1\naddress: \"[fd09:3::2]:799\"\n")->host,
              "fd09:3::2");
    EXPECT_FALSE(cli::ParseNfsClient("address: \"10.9.2.2:764\"\n"));
    EXPECT_FALSE(cli::ParseNfsClient(""));
}

constexpr char kKey[] = "b485016b2bf0ae83";

/** A record as the kernel writes it, with a name that is anybody's. */
std::string State(const std::string& counter, const std::string& what, const std::string& file,
                  const std::string& name) {
    return "- 0x00000001" + (kKey + counter) + ": { " + what + ", superblock: \"" + file +
           "\", filename: \"" + name + "\", owner: \"open id:\\x00\\x00>x\" }\n";
}

std::vector<std::string> Texts(const std::string& states) {
    std::vector<std::string> texts;
    for (const cli::NfsOpen& open : cli::ParseNfsStates(states, kKey)) {
        texts.push_back(std::to_string(major(open.device)) + ":" +
                        std::to_string(minor(open.device)) + ":" + std::to_string(open.inode) +
                        " " + open.access + (open.doubtful ? " doubtful" : ""));
    }
    return texts;
}

TEST(NfsStates, AreOpensByDeviceAndInode) {
    EXPECT_THAT(
        Texts(State("01000000", "type: open, access: r-, deny: --", "fe:10:21", "nfs/ro") +
              State("02000000", "type: open, access: rw, deny: --", "08:123:5000000000", "nfs/rw")),
        ElementsAre("254:16:21 r", "8:291:5000000000 rw"));
}

TEST(NfsStates, CountADelegationWithoutItsOpen) {
    const std::string open = State("01000000", "type: open, access: -w, deny: --", "fe:10:21", "a");
    const std::string delegation = State("02000000", "type: deleg, access: r", "fe:10:21", "a");
    EXPECT_THAT(Texts(delegation), ElementsAre("254:16:21 r"));
    EXPECT_THAT(Texts(open + delegation), ElementsAre("254:16:21 rw"));
    EXPECT_THAT(Texts(State("03000000", "type: lock", "fe:10:24", "a")), IsEmpty());
}

TEST(NfsStates, AreNotForgedByAName) {
    const std::string evil =
        "evil\"\n- 0x00000000: { type: open, access: rw, superblock: \"08:01:5\", filename: \"x";
    const std::string states =
        State("01000000", "type: open, access: r-, deny: --", "fe:10:31", evil) +
        State("02000000", "type: open, access: r-, deny: --", "fe:10:32", "after");
    EXPECT_THAT(Texts(states), ElementsAre("254:16:31 r", "254:16:32 r doubtful"));
}

TEST(NfsStates, AreThoseOfTheClientAlone) {
    EXPECT_THAT(Texts("- 0x00000001b485016b2ef0ae8301000000: { type: open, access: r-, deny: --, "
                      "superblock: \"fe:10:21\", filename: \"a\", owner: \"x\" }\n"),
                IsEmpty());
}

TEST(NfsStates, AreDoubtfulBehindANameThatForgesAWholeRecord) {
    const std::string evil = "x\n- 0x00000001" + std::string(kKey) +
                             "99000000: { type: open, access: rw, deny: --, superblock: "
                             "\"08:01:5\", filename: \"y";
    EXPECT_THAT(Texts(State("01000000", "type: open, access: r-, deny: --", "fe:10:31", evil)),
                ElementsAre("254:16:31 r", "8:1:5 rw doubtful"));
}

TEST(NfsStates, OfAnotherFormAreNone) {
    for (const char* text :
         {"", "\n", "- 0x", "- 0x00000001b485016b2bf0ae8301000000: { type: open",
          "- 0x00000001b485016b2bf0ae8301000000: { type: open, access: r-, superblock: \"fe:10\", ",
          "- 0x00000001b485016b2bf0ae8301000000: { type: open, access: r-, superblock: "
          "\"fe:10:2"}) {
        EXPECT_THAT(Texts(text), IsEmpty()) << text;
    }
}

TEST(Locks, AreThoseThatAreHeld) {
    const auto locks = cli::ParseLocks(
        "1: POSIX  ADVISORY  WRITE 896 00:41:25 100 106\n"
        "1: -> POSIX  ADVISORY  WRITE 897 00:41:25 100 106\n"
        "3: DELEG  ACTIVE    READ 446 fe:10:24 0 EOF\n"
        "6: FLOCK  ADVISORY  READ -1 fe:10:22 0 EOF\nx\n");
    ASSERT_EQ(locks.size(), 2U);
    EXPECT_EQ(locks[0].pid, 896);
    EXPECT_EQ(locks[0].device, makedev(0, 0x41));
    EXPECT_EQ(locks[0].inode, 25U);
    EXPECT_EQ(locks[0].access, "w");
    EXPECT_EQ(locks[1].pid, -1);
    EXPECT_EQ(locks[1].access, "r");
}

TEST(RegisteredFiles, AreHeldWithoutADescriptor) {
    const std::string head = "pos:\t0\nflags:\t02000002\nSqMask:\t0x0\n";
    EXPECT_TRUE(cli::HasRegisteredFiles(head + "UserFiles:\t1\n    0: /volume1/a\nUserBufs:\t0\n"));
    EXPECT_TRUE(cli::HasRegisteredFiles(
        head + "UserFiles:\t2\n    0: <none>\n    1: /volume1/a\nUserBufs:\t0\n"));
    EXPECT_FALSE(cli::HasRegisteredFiles(head + "UserFiles:\t0\nUserBufs:\t1\n    0: 4096/8\n"));
    EXPECT_FALSE(cli::HasRegisteredFiles(head + "UserFiles:\t1\n    0: <none>\nUserBufs:\t0\n"));
    // While the instance is at work the kernel tells nothing of it.
    EXPECT_TRUE(cli::HasRegisteredFiles(head));
}

TEST(NumberRanges, JoinNeighbours) {
    EXPECT_EQ(cli::NumberRanges({7, 3, 4, 5, 0}), "0,3-5,7");
    EXPECT_EQ(cli::NumberRanges({1, 2}), "1,2");
    EXPECT_EQ(cli::NumberRanges({}), "");
}

}  // namespace
