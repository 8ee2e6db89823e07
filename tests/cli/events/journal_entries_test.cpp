// SPDX-License-Identifier: MIT
#include "cli/events/journal_entries.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

constexpr cli::Moment kMoment = 1709820309000042;

class Entries : public testing::Test {
protected:
    /** What every entry has, behind its message. */
    static std::string Head(int number, const std::string& event) {
        return "MESSAGE_ID=f1b3b7a0c56d4f0f9a0a7a4c8f2e6d15\nPRIORITY=6\n"
               "SYSLOG_IDENTIFIER=vorn-openfiles\nVORN_SCHEMA=2\nVORN_NODE=nas\nVORN_RUN=0f\n"
               "VORN_SEQ=" +
               std::to_string(number) + "\nVORN_AT=1709820309000042\nVORN_EVENT=" + event + '\n';
    }

    std::string out_;
    int ended_ = 0;
    cli::JournalEntries entries_{{"nas", "", "0f"}, out_, [this] { ++ended_; }};
};

TEST_F(Entries, AreNumberedWithoutGaps) {
    entries_.Started(kMoment, {{"/volume1", "/volume2"}, {"/volume4"}, {"/volume3"}});
    entries_.Plain("lost", kMoment);
    EXPECT_EQ(out_,
              "MESSAGE=started: watches /volume1, /volume2; looks at /volume4; "
              "not /volume3\n" +
                  Head(1, "started") +
                  "VORN_VOLUMES=/volume1\nVORN_VOLUMES=/volume2\nVORN_LOOKED_AT=/"
                  "volume4\nVORN_UNWATCHED=/volume3\n" +
                  "MESSAGE=lost\n" + Head(2, "lost"));
    EXPECT_EQ(ended_, 2);
}

TEST_F(Entries, TellTheMachineWhereItIsKnown) {
    std::string out;
    cli::JournalEntries entries({"nas", "a1", "0f"}, out, [] {});
    entries.Plain("heartbeat", kMoment);
    EXPECT_NE(out.find("\nVORN_MACHINE_ID=a1\n"), std::string::npos);
}

TEST_F(Entries, TellTheProcess) {
    const cli::ProcessAnswer process{{"7", "SMB", "192.0.2.10", "alice"}, 99, "smbd"};
    entries_.File("opened", kMoment, {"/volume1", "/volume1/a b", "a b", true, 7, &process});
    EXPECT_EQ(out_, "MESSAGE=opened /volume1/a b: alice from 192.0.2.10, SMB, smbd 7\n" +
                        Head(1, "opened") +
                        "VORN_VOLUME=/volume1\nVORN_PROCESS_START=99\nVORN_PID=7\n"
                        "VORN_SERVICE=SMB\nVORN_USER=alice\nVORN_HOST=192.0.2.10\n"
                        "VORN_COMMAND=smbd\nVORN_PATH=/volume1/a b\nVORN_FILENAME=a b\n"
                        "VORN_DELETED=yes\n");
}

TEST_F(Entries, TellWhatWasOpenBeforeAndWhatALookLacks) {
    cli::ToldFile file{"/volume1", "/volume1/a", "a"};
    file.initial = true;
    entries_.File("opened", kMoment, file);
    EXPECT_EQ(out_.substr(out_.rfind("VORN_DELETED")), "VORN_DELETED=no\nVORN_INITIAL=yes\n");
    out_.clear();
    entries_.Incomplete(kMoment, {"b", "c\nd"});
    EXPECT_EQ(out_, "MESSAGE=incomplete: b; c\\nd\n" + Head(2, "incomplete") +
                        "VORN_REASON=b\nVORN_REASON\n\x03\0\0\0\0\0\0\0c\nd\n"s);
}

TEST_F(Entries, HaveTheBytesOfNamesWithTheirSizeWhereThereIsANewline) {
    entries_.File("closed", kMoment, {"/volume1", "/volume1/\xFF\n", "\xFF\n", false, 7, nullptr});
    EXPECT_EQ(out_, "MESSAGE=closed /volume1/\\xFF\\n: process 7\n" + Head(1, "closed") +
                        "VORN_VOLUME=/volume1\nVORN_PID=7\n"
                        "VORN_PATH\n\x0B\0\0\0\0\0\0\0/volume1/\xFF\n\n"
                        "VORN_FILENAME\n\x02\0\0\0\0\0\0\0\xFF\n\n"
                        "VORN_DELETED=no\n"s);
}

TEST_F(Entries, LeaveOutWhatIsNotKnown) {
    const cli::ProcessAnswer local{{"7", "Internal service", "-", "-"}, 99, "-"};
    entries_.File("closed", kMoment, {"/volume1", {}, "-", false, 7, &local});
    entries_.File("closed", kMoment, {"", {}, "", false, 0, nullptr});
    EXPECT_EQ(out_, "MESSAGE=closed -: Internal service, - 7\n" + Head(1, "closed") +
                        "VORN_VOLUME=/volume1\nVORN_PROCESS_START=99\nVORN_PID=7\n"
                        "VORN_SERVICE=Internal service\nVORN_COMMAND=-\nVORN_FILENAME=-\n"
                        "MESSAGE=closed a file: process elsewhere\n" +
                        Head(2, "closed"));
}

}  // namespace
