// SPDX-License-Identifier: MIT
#include "cli/host/rights.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(Rights, AreReadFromTheStatusOfAProcess) {
    struct Case {
        const char* status;
        bool ptrace;
        bool search;
    };
    const Case kCases[] = {
        {"Name:\tx\nCapPrm:\t0000000000000000\nCapEff:\t000001ffffffffff\nCapBnd:\t0\n", true,
         true},
        {"Name:\tx\nCapEff:\t0000000000000000\n", false, false},
        {"Name:\tx\nCapEff:\t0000000000080000\n", true, false},
        {"Name:\tx\nCapEff:\t0000000000000004\n", false, true},
        {"Name:\tx\nCapEff:\t0000000000000002\n", false, true},
        {"Name:\tx\n", false, false},
        {"", false, false},
    };
    for (const Case& each : kCases) {
        const cli::Rights rights = cli::ParseRights(each.status);
        EXPECT_EQ(rights.ptrace, each.ptrace) << each.status;
        EXPECT_EQ(rights.search, each.search) << each.status;
    }
}

TEST(Rights, AreMissedInWords) {
    EXPECT_EQ(cli::MissingRights({true, true}), "");
    const std::string said =
        geteuid() == 0 ? "root lacks CAP_SYS_PTRACE or CAP_DAC_READ_SEARCH here: processes "
                         "of other users may be missing"
                       : "not running as root: only files of this user's own processes are "
                         "seen";
    EXPECT_EQ(cli::MissingRights({true, false}), said);
    EXPECT_EQ(cli::MissingRights({false, true}), said);
}

}  // namespace
