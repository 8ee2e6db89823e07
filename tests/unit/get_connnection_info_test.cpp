// SPDX-License-Identifier: MIT
#include <algorithm>
#include <boost/lexical_cast.hpp>
#include <new>

#include "src/filehandle_internal.h"
#include "tests/unit/support/connection_test.h"
#include "tests/unit/support/failing_new.h"

using namespace VORN::FileHandle;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::kConnectionSource;

class ConnectionInfo : public unit::ConnectionTest {
protected:
    ::testing::AssertionResult ConversionLogged() {
        return Logged(LOG_ERR, "%s:%d Failed to transfer string to pid_t, %s", kConnectionSource,
                      77, boost::bad_lexical_cast().what());
    }
    ::testing::AssertionResult WrongFormatLogged(int line, const char* pid) {
        return Logged(LOG_ERR, "%s:%d Failed to get pid, error:[wrong format:%s]",
                      kConnectionSource, line, pid);
    }
    ::testing::AssertionResult SetterLogged(int line, const char* condition) {
        return Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", line,
                      condition, 0);
    }
    void ExpectHostFailure() {
        EXPECT_TRUE(SetterLogged(62, "!host.empty()"));
        EXPECT_TRUE(
            Logged(LOG_ERR, "%s:%d Failed to set host for opened file", kConnectionSource, 206));
        EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 62));
        EXPECT_TRUE(ErrorSet(0x2A00, kConnectionSource, 205));
    }
    void ExpectUserFailure() {
        EXPECT_TRUE(SetterLogged(68, "!user.empty()"));
        EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to set user info for opened file",
                           kConnectionSource, 211));
        EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 68));
        EXPECT_TRUE(ErrorSet(0x2A00, kConnectionSource, 210));
    }
};

TEST_F(ConnectionInfo, ConvertsPidTexts) {
    const std::pair<const char*, int> good[] = {
        {"0", 0},
        {"1", 1},
        {"0042", 42},
        {"+7", 7},
        {"-5", -5},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
    };
    for (const auto& [text, pid] : good) {
        EXPECT_EQ(StringToPid(text), pid);
    }
    for (const char* text : {"", " 7", "7 ", "12a", "0x7", "+", "-", "7.0", "2147483648",
                             "-2147483649", "4294967295", "99999999999999999999"}) {
        EXPECT_EQ(StringToPid(text), -1) << text;
        EXPECT_TRUE(ConversionLogged()) << text;
    }
}

TEST_F(ConnectionInfo, IsAskedForEvenForAnEmptyList) {
    EXPECT_THAT(Run(), IsEmpty());
    EXPECT_THAT(journal.Calls(), ElementsAre("VORNCurConnGet(null)"));
}

TEST_F(ConnectionInfo, FailsAndTouchesNothingWhenThePlatformFails) {
    SetSshEntries({"7", "8"});
    SetOldTexts();
    for (int result : {-1, -5}) {
        platform.connectionResult = result;
        EXPECT_THAT(Run(-1), Each("old host old user"));
        EXPECT_TRUE(
            Logged(LOG_ERR, "%s:%d Failed to get current connection info", kConnectionSource, 178));
        EXPECT_THAT(journal.Calls(), ElementsAre("VORNCurConnGet(null)"));
    }
    files.clear();
    EXPECT_THAT(Run(-1), IsEmpty());
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to get current connection info", kConnectionSource, 178));
}

TEST_F(ConnectionInfo, IsADashForEveryoneWithoutConnections) {
    SetEntries({{"50", "SSH"}, {"60", "SMB"}, {"70", "ssh"}});
    SetOldTexts();
    SetParents({{50, 40}, {40, 1}, {60, 1}, {70, 0}});

    EXPECT_THAT(Run(), Each("- -"));
    EXPECT_THAT(Lookups(), ElementsAre(50, 40, 70));
}

TEST_F(ConnectionInfo, FreesABlockThatCountsNoRecordAndReadsNothingInIt) {
    platform.connections = {{7, "10.0.0.1", "ann", kSsh}};
    platform.connectionResult = 0;
    SetSshEntries({"7"});

    EXPECT_THAT(Run(), ElementsAre("- -"));
    EXPECT_EQ(BlocksFreed(), 1U);
}

TEST_F(ConnectionInfo, OfTheEntrysOwnProcessCountsWhateverTypeAndService) {
    platform.connections = {{7, "10.0.0.1", "ann", kSmb},
                            {8, "10.0.0.2", "bob", kSsh},
                            {9, "10.0.0.3", "cat", 0},
                            {4294967295U, "10.0.0.4", "dan", kSmb}};
    SetEntries({{"9", "SSH"}, {"7", "FTP"}, {"8", "SMB"}, {"7", "SSH"}, {"4294967295", "SMB"}});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.3 cat", "10.0.0.1 ann", "10.0.0.2 bob", "10.0.0.1 ann",
                                   "10.0.0.4 dan"));
    EXPECT_THAT(Lookups(), IsEmpty());
    EXPECT_EQ(BlocksFreed(), 1U);
}

TEST_F(ConnectionInfo, OfAProcessIsTheLastOne) {
    platform.connections = {
        {7, "10.0.0.1", "ann", kSsh}, {8, "10.0.0.2", "bob", kSmb}, {7, "10.0.0.3", "cat", kSmb}};
    SetParents({{70, 7}});
    SetSshEntries({"7", "70"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.3 cat", "10.0.0.3 cat"));
}

TEST_F(ConnectionInfo, IsLookedForAboveSshEntriesAlone) {
    platform.connections = {{1000, "10.0.0.1", "ann", kSsh}};
    SetParents({{1001, 1000}});
    for (const char* service : {"SSH", "ssh", "sSh", "SsH"}) {
        SetEntries({{"1001", service}});
        EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann")) << service;
    }
    for (const char* service : {"SSHX", "SSH ", " SSH", "SS", "SSI", "OpenSSH"}) {
        SetEntries({{"1001", service}});
        EXPECT_THAT(Run(), ElementsAre("- -")) << service;
        EXPECT_THAT(Lookups(), IsEmpty()) << service;
    }
    files = unit::Records({{"1001", "/volume1/without service"}});
    EXPECT_THAT(Run(), ElementsAre("- -"));
}

TEST_F(ConnectionInfo, FailsBeforeAnyEntryForAnSshPidBeyondTheSignedRange) {
    platform.connections = {{7, "10.0.0.1", "ann", kSmb}, {2147483648U, "10.0.0.2", "bob", kSsh}};
    SetEntries({{"7", "SMB"}, {"8", "SSH"}});
    SetOldTexts();

    EXPECT_THAT(Run(-1), Each("old host old user"));

    EXPECT_TRUE(ConversionLogged());
    EXPECT_TRUE(WrongFormatLogged(94, "2147483648"));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to build unordered map for ssh pid", kConnectionSource, 197));
    EXPECT_THAT(journal.Calls(), ElementsAre("VORNCurConnGet(null)", "free(connection block)"));
}

TEST_F(ConnectionInfo, AcceptsTheGreatestSshPid) {
    platform.connections = {{2147483647, "10.0.0.1", "ann", kSsh}};
    SetParents({{7, 2147483647}});
    SetSshEntries({"7"});

    EXPECT_THAT(Run(), ElementsAre("10.0.0.1 ann"));
}

TEST_F(ConnectionInfo, IsADashForAnSshEntryWhosePidDoesNotConvert) {
    platform.connections = {{1000, "10.0.0.1", "ann", kSsh}};
    SetParents({{1001, 1000}});
    SetSshEntries({"12a", "-5", "99999999999", "1001", "+1001"});

    EXPECT_THAT(Run(), ElementsAre("- -", "- -", "- -", "10.0.0.1 ann", "10.0.0.1 ann"));

    EXPECT_TRUE(ConversionLogged());
    EXPECT_TRUE(WrongFormatLogged(144, "12a"));
    EXPECT_TRUE(WrongFormatLogged(144, "-5"));
    EXPECT_TRUE(ConversionLogged());
    EXPECT_TRUE(WrongFormatLogged(144, "99999999999"));
    EXPECT_THAT(Lookups(), ElementsAre(1001));
}

TEST_F(ConnectionInfo, WithAnEmptyHostFailsThere) {
    platform.connections = {{7, "10.0.0.1", "ann", kSmb}, {8, "", "bob", kSmb}};
    SetEntries({{"7", "SMB"}, {"8", "SMB"}, {"7", "SMB"}});
    SetOldTexts();

    EXPECT_THAT(Run(-1), ElementsAre("10.0.0.1 ann", "old host old user", "old host old user"));

    ExpectHostFailure();
    EXPECT_EQ(KLIBCErrGet(), 0x2A00);
    EXPECT_EQ(BlocksFreed(), 1U);
}

TEST_F(ConnectionInfo, WithAnEmptyUserFailsWithTheHostAlreadyStored) {
    platform.connections = {{7, "10.0.0.1", "ann", kSmb}, {1000, "10.0.0.2", "", kSsh}};
    SetParents({{8, 1000}});
    SetEntries({{"7", "SMB"}, {"8", "SSH"}, {"7", "SMB"}});
    SetOldTexts();

    EXPECT_THAT(Run(-1), ElementsAre("10.0.0.1 ann", "10.0.0.2 old user", "old host old user"));

    ExpectUserFailure();
    EXPECT_EQ(KLIBCErrGet(), 0x2A00);
    EXPECT_EQ(BlocksFreed(), 1U);
}

TEST_F(ConnectionInfo, ThatIsEmptyDoesNoHarmWhereNobodyMatches) {
    platform.connections = {{7, "", "", kSmb}};
    SetEntries({{"8", "SMB"}});
    EXPECT_THAT(Run(), ElementsAre("- -"));
}

TEST_F(ConnectionInfo, FailsWhereADashIsRefused) {
    SetEntries({{"7", "SMB"}, {"8", "SMB"}});
    setters.Refuse("setHost", 2);
    EXPECT_THAT(Run(-1), ElementsAre("- -", " "));
    ExpectHostFailure();

    SetEntries({{"7", "SMB"}, {"8", "SMB"}});
    setters.Refuse("setUser", 2);
    EXPECT_THAT(Run(-1), ElementsAre("- -", "- "));
    ExpectUserFailure();
}

TEST_F(ConnectionInfo, ChangesNothingElse) {
    platform.connections = {{7, "10.0.0.1", "ann", kSmb}};
    SetEntries({{"9", "SMB"}, {"7", "FTP"}, {"9", "SMB"}});
    files.front().setPath("/path");
    files.front().setFilename("name");
    const auto before = unit::Shown(files);

    EXPECT_THAT(Run(), ElementsAre("- -", "10.0.0.1 ann", "- -"));

    EXPECT_EQ(unit::Shown(files), before);
    EXPECT_THAT(unit::Column(files, &OpenedFile::getService), ElementsAre("SMB", "FTP", "SMB"));
    EXPECT_EQ(files.front().getPath() + files.front().getFilename(), "/pathname");
    EXPECT_FALSE(files.front().isHidden() || files.front().isFolder());
    EXPECT_EQ(files.front().getTime(), "");
}

TEST_F(ConnectionInfo, IsReleasedOnceWhateverAllocationFails) {
    const std::string host(100, 'h');
    platform.connections = {{1000, host, "ann", kSsh}, {7, host, "bob", kSmb}};
    SetParents({{1001, 1000}, {1002, 1001}});
    std::vector<size_t> entriesDone;
    for (int number = 1;; ++number) {
        SetEntries({{"7", "SMB"}, {"1002", "SSH"}, {"1001", "SSH"}});
        SetOldTexts();
        journal.Clear();
        bool fired = false;
        try {
            const unit::FailingNew failing(number);
            EXPECT_EQ(UpdateConnectionInfo(files), 0);
            fired = unit::FailingNew::Fired();
        } catch (const std::bad_alloc&) {
            fired = true;
        }
        EXPECT_THAT(journal.CallsOf("free"), ElementsAre("free(connection block)")) << number;
        EXPECT_THAT(platform.LiveObjects(), IsEmpty()) << number;
        const std::vector<std::string> texts = HostsAndUsers();
        entriesDone.push_back(
            3 - static_cast<size_t>(std::count(texts.begin(), texts.end(), "old host old user")));
        if (!fired) {
            break;
        }
    }
    // Later failures leave more behind.
    EXPECT_TRUE(std::is_sorted(entriesDone.begin(), entriesDone.end()));
    EXPECT_EQ(entriesDone.front(), 0U);
    EXPECT_EQ(entriesDone.back(), 3U);
    EXPECT_GT(entriesDone.size(), 5U);
}
