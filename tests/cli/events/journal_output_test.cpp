// SPDX-License-Identifier: MIT
#include "cli/events/journal_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/** Stands where journald listens. */
class Receiver {
public:
    explicit Receiver(const std::string& path)
        : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        struct sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        unlink(path.c_str());
        EXPECT_EQ(bind(socket_.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }

    /** The next entry, in a datagram or a sealed file; empty when there is none. */
    std::string Next() {
        std::string text(1 << 16, '\0');
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
        struct iovec part = {text.data(), text.size()};
        struct msghdr message {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        const ssize_t size = recvmsg(socket_.Get(), &message, 0);
        if (size < 0) {
            return {};
        }
        text.resize(static_cast<size_t>(size));
        if (const struct cmsghdr* const head = CMSG_FIRSTHDR(&message); head != nullptr) {
            int fd = -1;
            std::memcpy(&fd, CMSG_DATA(head), sizeof(fd));
            return Content(support::Descriptor(fd));
        }
        return text;
    }

private:
    static std::string Content(const support::Descriptor& file) {
        constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
        EXPECT_EQ(fcntl(file.Get(), F_GET_SEALS), kSeals);
        struct stat info {};
        fstat(file.Get(), &info);
        std::string text(static_cast<size_t>(info.st_size), '\0');
        EXPECT_EQ(pread(file.Get(), text.data(), text.size(), 0), info.st_size);
        return text;
    }

    support::Descriptor socket_;
};

class JournalOutput : public testing::Test {
protected:
    JournalOutput() {
        std::string pattern = testing::TempDir() + "journal-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        signals_ = support::Descriptor(ends[0]);
        signalling_ = support::Descriptor(ends[1]);
    }
    ~JournalOutput() override {
        unlink(Path().c_str());
        rmdir(folder_.c_str());
    }

    std::string Path() const { return folder_ + "/socket"; }
    void Add(cli::JournalOutput& output, const std::string& entry) {
        output.Text() += entry;
        output.EndEntry();
    }
    void Signal() { ASSERT_EQ(write(signalling_.Get(), "s", 1), 1); }

    std::string folder_;
    support::Descriptor signals_;
    support::Descriptor signalling_;
};

TEST_F(JournalOutput, SendsEachEntryByItself) {
    Receiver receiver(Path());
    cli::JournalOutput output(signals_.Get(), Path());
    Add(output, "a\n");
    Add(output, "bc\n");
    EXPECT_TRUE(output.Flush());
    Add(output, "d\n");
    EXPECT_TRUE(output.FlushLast());
    for (const char* const entry : {"a\n", "bc\n", "d\n", ""}) {
        EXPECT_EQ(receiver.Next(), entry);
    }
}

TEST_F(JournalOutput, SendsWhatIsTooLargeForADatagramAsASealedFile) {
    Receiver receiver(Path());
    cli::JournalOutput output(signals_.Get(), Path());
    const std::string large(20 << 20, 'x');
    Add(output, "a\n");
    Add(output, large);
    Add(output, "b\n");
    EXPECT_TRUE(output.Flush());
    EXPECT_EQ(receiver.Next(), "a\n");
    EXPECT_TRUE(receiver.Next() == large);
    EXPECT_EQ(receiver.Next(), "b\n");
}

TEST_F(JournalOutput, KeepsEntriesWhileNobodyListens) {
    cli::JournalOutput output(signals_.Get(), Path());
    Add(output, "a\n");
    Signal();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(output.Flush());
    EXPECT_FALSE(output.Flush());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vorn-openfiles: the journal takes no events (" + Path() +
                  ": No such file or directory); they wait, and what there is no room for is told "
                  "as lost\n");
    Receiver receiver(Path());
    testing::internal::CaptureStderr();
    EXPECT_TRUE(output.Flush());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vorn-openfiles: the journal takes events again\n");
    EXPECT_EQ(receiver.Next(), "a\n");
    EXPECT_EQ(receiver.Next(), "");
}

TEST_F(JournalOutput, GoesOnWithAnotherListener) {
    cli::JournalOutput output(signals_.Get(), Path());
    {
        const Receiver first(Path());
        Add(output, "a\n");
        EXPECT_TRUE(output.Flush());
    }
    Signal();
    Add(output, "b\n");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(output.Flush());
    Receiver second(Path());
    EXPECT_TRUE(output.Flush());
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(second.Next(), "b\n");
}

TEST_F(JournalOutput, LeavesAListenerThatStandsStillForOneInItsPlace) {
    cli::JournalOutput output(signals_.Get(), Path());
    const Receiver still(Path());
    constexpr int kMoreThanTheQueueTakes = 2000;
    for (int i = 0; i < kMoreThanTheQueueTakes; ++i) {
        Add(output, "a\n");
    }
    Signal();
    EXPECT_FALSE(output.Flush());
    Receiver other(Path());
    testing::internal::CaptureStderr();
    for (int i = 0; i < 100 && other.Next().empty(); ++i) {
        output.Flush();
        usleep(100000);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("the journal takes no events"), 16U);
    EXPECT_EQ(other.Next(), "a\n");
}

TEST_F(JournalOutput, WaitsForRoomUntilThereIsASignalAndLosesNothing) {
    Receiver receiver(Path());
    cli::JournalOutput output(signals_.Get(), Path());
    constexpr int kEntries = 5000;
    for (int i = 0; i < kEntries; ++i) {
        Add(output, std::to_string(i));
    }
    Signal();
    EXPECT_FALSE(output.Flush());
    std::string next;
    for (int i = 0; i < kEntries; ++i) {
        next = receiver.Next();
        if (next.empty()) {
            output.Flush();
            next = receiver.Next();
        }
        ASSERT_EQ(next, std::to_string(i));
    }
}

TEST_F(JournalOutput, SaysHowManyHaveNotArrivedInTheEnd) {
    cli::JournalOutput output(signals_.Get(), Path());
    Add(output, "a\n");
    Add(output, "b\n");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(output.FlushLast());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vorn-openfiles: 2 events have not reached the journal (" + Path() +
                  ": No such file or directory)\n");
}

}  // namespace
