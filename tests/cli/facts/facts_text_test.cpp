// SPDX-License-Identifier: MIT
#include "cli/host/facts/facts_text.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

struct LockRow {
    std::string line;
    const char* kind;
    const char* access;
    pid_t pid;
    const char* file;
    std::uint64_t begin;
    std::optional<std::uint64_t> end;
    bool waits;
};

TEST(KernelLock, IsReadFromItsLine) {
    const LockRow rows[] = {
        {"1: POSIX  ADVISORY  WRITE 29024 08:01:1234 0 EOF", "POSIX", "WRITE", 29024, "08:01:1234",
         0, std::nullopt, false},
        {"12: POSIX  ADVISORY  READ 7 00:2c:35 100 199", "POSIX", "READ", 7, "00:2c:35", 100, 199,
         false},
        {"3: FLOCK  ADVISORY  WRITE 8 08:01:1 0 EOF", "FLOCK", "WRITE", 8, "08:01:1", 0,
         std::nullopt, false},
        {"4: OFDLCK ADVISORY  READ -1 fe:00:1196290 203 203", "OFDLCK", "READ", -1, "fe:00:1196290",
         203, 203, false},
        {"5: LEASE  ACTIVE    READ 9 08:01:1 0 EOF", "LEASE", "READ", 9, "08:01:1", 0, std::nullopt,
         false},
        {"5: LEASE  BREAKING  UNLCK 9 08:01:1 0 EOF", "LEASE", "UNLCK", 9, "08:01:1", 0,
         std::nullopt, false},
        {"1: -> POSIX  ADVISORY  WRITE 10 08:01:1234 0 EOF", "POSIX", "WRITE", 10, "08:01:1234", 0,
         std::nullopt, true},
        {"1:   -> FLOCK  ADVISORY  WRITE 11 08:01:1 0 EOF", "FLOCK", "WRITE", 11, "08:01:1", 0,
         std::nullopt, true},
        {"1: POSIX  *NOINODE* WRITE 10 <none>:0 0 9223372036854775807", "POSIX", "WRITE", 10,
         "<none>:0", 0, 9223372036854775807U, false},
    };
    for (const LockRow& row : rows) {
        const auto lock = cli::ParseKernelLock(row.line);
        ASSERT_TRUE(lock) << row.line;
        EXPECT_EQ(lock->kind, row.kind) << row.line;
        EXPECT_EQ(lock->access, row.access) << row.line;
        EXPECT_EQ(lock->pid, row.pid) << row.line;
        EXPECT_EQ(lock->file, row.file) << row.line;
        EXPECT_EQ(lock->begin, row.begin) << row.line;
        EXPECT_EQ(lock->end, row.end) << row.line;
        EXPECT_EQ(lock->waits, row.waits) << row.line;
    }
}

TEST(KernelLock, IsNoneInALineOfAnotherForm) {
    for (const char* line :
         {"", "1:", "1: POSIX", "POSIX  ADVISORY  WRITE 29024 08:01:1234 0 EOF",
          "1: POSIX  ADVISORY  WRITE x 08:01:1234 0 EOF", "1: POSIX  ADVISORY  WRITE 1 08:01:1234",
          "1: POSIX  ADVISORY  WRITE 1 08:01:1234 0", "1: POSIX  ADVISORY  WRITE 1 08:01:1 0 EO",
          "1: POSIX  ADVISORY  WRITE 1 08:01:1 0 EOF 7",
          "1: POSIX  ADVISORY  WRITE 1 08:01:1 -1 2"}) {
        EXPECT_FALSE(cli::ParseKernelLock(line)) << line;
    }
}

TEST(OpenState, HasTheModeOfTheFlags) {
    const std::pair<const char*, const char*> rows[] = {
        {"0100000", "r"},   {"0100001", "w"},    {"0100002", "rw"},  {"02100001", "w"},
        {"0102001", "wa"},  {"02102002", "rwa"}, {"0102000", "r"},   {"010000000", "-"},
        {"012000000", "-"}, {"0100003", "-"},    {"020300000", "r"},
    };
    for (const auto& [flags, mode] : rows) {
        const auto state = cli::ParseOpenState("pos:\t0\nflags:\t" + std::string(flags) +
                                               "\nmnt_id:\t29\nino:\t35\n");
        ASSERT_TRUE(state) << flags;
        EXPECT_EQ(cli::ModeName(*state), mode) << flags;
        EXPECT_TRUE(state->locks.empty());
    }
}

TEST(OpenState, HasEachLockThatTheTextHasWhole) {
    const auto state = cli::ParseOpenState(
        "pos:\t0\nflags:\t0100002\nmnt_id:\t29\nino:\t35\n"
        "lock:\t1: POSIX  ADVISORY  WRITE 7 00:2c:35 0 9\n"
        "lock:\t2: FLOCK  ADVISORY  WRITE 7 00:2c:35 0 EOF\n"
        "lock:\t3: POSIX  ADVI\n");
    ASSERT_TRUE(state);
    ASSERT_EQ(state->locks.size(), 2U);
    EXPECT_EQ(state->locks[0].kind, "POSIX");
    EXPECT_EQ(state->locks[1].kind, "FLOCK");
}

TEST(OpenState, IsNoneWithoutFlags) {
    for (const char* text : {"", "pos:\t0\n", "flags:\tx\n", "flags:\t9\n", "flags: 0100000\n"}) {
        EXPECT_FALSE(cli::ParseOpenState(text)) << text;
    }
}

TEST(OpenState, IsOfTheFileThatItNames) {
    using Identity = std::pair<std::string_view, std::string_view>;
    const std::pair<std::string, Identity> rows[] = {
        {"pos:\t0\nflags:\t0100000\nmnt_id:\t29\nino:\t35\n", {"29", "35"}},
        {"pos:\t0\nflags:\t0100000\nmnt_id:\t29\n", {"29", ""}},
        {"", {"", ""}},
    };
    for (const auto& [text, file] : rows) {
        EXPECT_EQ(cli::FileIn(text), file) << text;
    }
}

TEST(Unit, IsTheFirstBelowTheSlices) {
    const std::pair<std::string, std::string> rows[] = {
        {"1:name=systemd:/SMBService.slice/smbd.service\n", "smbd.service"},
        {"12:pids:/other.service\n1:name=systemd:/a.slice/a-b.slice/b.service\n0::/c.service\n",
         "b.service"},
        {"0::/system.slice/ssh.service\n", "ssh.service"},
        {"0::/user.slice/user-1000.slice/session-3.scope\n", "session-3.scope"},
        {"0::/user.slice/user-1000.slice/user@1000.service/app.slice/editor.scope\n",
         "user@1000.service"},
        {"0::/system.slice/docker.service/inner.service\n", "docker.service"},
        {"0::/init.scope\n", "init.scope"},
        {"0::/system.slice/_cpu.service\n", "cpu.service"},
        {"0::/system.slice/x.socket\n", "x.socket"},
        {"0::/system.slice\n", ""},
        {"0::/kubepods/pod1\n", ""},
        {"0::/\n", ""},
        {"0::/../x.service\n", ""},
        {"1:name=systemd:/\n0::/x.service\n", ""},
        {"10::/x.service\n", ""},
        {"4:memory:/name=systemd:/x.service\n", ""},
        {"", ""},
    };
    for (const auto& [text, unit] : rows) {
        EXPECT_EQ(cli::UnitOf(text), unit) << text;
    }
}

}  // namespace
