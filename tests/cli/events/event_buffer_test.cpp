// SPDX-License-Identifier: MIT
#include "cli/events/event_buffer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/fanotify.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <string>

#include "cli/failure.h"

namespace {

using cli::FileEvents;
using cli::ParseEvents;

template <typename Head>
std::string Bytes(const Head& head) {
    return {reinterpret_cast<const char*>(&head), sizeof(head)};
}

std::string Info(int type, const std::string& content) {
    fanotify_event_info_header header{};
    header.info_type = static_cast<__u8>(type);
    header.len = static_cast<__u16>(sizeof(header) + content.size());
    return Bytes(header) + content;
}

const std::string kFileSystem = "12345678";

std::string HandleOf(const std::string& bytes, size_t size) {
    const unsigned sizes[] = {static_cast<unsigned>(size), 1};
    return Bytes(sizes) + bytes;
}

std::string HandleOf(const std::string& bytes) {
    return HandleOf(bytes, bytes.size());
}

/** A folder's handle and a name, as the kernel fills up to a multiple of four. */
std::string Folder(const std::string& handle, const std::string& name) {
    std::string content = kFileSystem + HandleOf(handle) + name + '\0';
    content.resize((content.size() + 3) / 4 * 4);
    return Info(FAN_EVENT_INFO_TYPE_DFID_NAME, content);
}

std::string Process(int descriptor) {
    return Info(FAN_EVENT_INFO_TYPE_PIDFD, Bytes(descriptor));
}

std::string Event(std::uint64_t mask, int pid, const std::string& infos,
                  int version = FANOTIFY_METADATA_VERSION) {
    fanotify_event_metadata head{};
    head.event_len = static_cast<__u32>(sizeof(head) + infos.size());
    head.vers = static_cast<__u8>(version);
    head.metadata_len = sizeof(head);
    head.mask = mask;
    head.fd = FAN_NOFD;
    head.pid = pid;
    return Bytes(head) + infos;
}

TEST(EventBuffer, GivesEachEventItsFolderNameAndProcess) {
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const std::string buffer =
        Event(FAN_OPEN, 7, Folder("abcdefgh", "one") + Process(descriptor)) +
        Event(FAN_CLOSE_WRITE, 8, Process(FAN_NOPIDFD) + Folder("xyz", "\xFF\n two"));
    const FileEvents events = ParseEvents(buffer);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].mask, FAN_OPEN);
    EXPECT_EQ(events[0].pid, 7);
    EXPECT_EQ(events[0].process.Get(), descriptor);
    EXPECT_EQ(events[0].name, "one");
    EXPECT_EQ(cli::SplitFolder(events[0].folder).fileSystem, kFileSystem);
    EXPECT_EQ(cli::SplitFolder(events[0].folder).handle, HandleOf("abcdefgh"));
    EXPECT_EQ(events[1].pid, 8);
    EXPECT_FALSE(events[1].process);
    EXPECT_EQ(events[1].name, "\xFF\n two");
    EXPECT_FALSE(events[0].IsLost() || events[1].IsLost());
}

TEST(EventBuffer, TakesNamesAndHandlesAsLongAsTheyCanBe) {
    const std::string handle(MAX_HANDLE_SZ, 'h');
    const std::string name(255, 'n');
    const std::string buffer = Event(FAN_OPEN, 1, Folder(handle, name));
    const FileEvents events = ParseEvents(buffer);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].name, name);
    EXPECT_EQ(cli::SplitFolder(events[0].folder).handle, HandleOf(handle));
}

TEST(EventBuffer, LeavesEmptyWhatIsNotTold) {
    const std::string buffer = Event(FAN_OPEN, 0, "") + Event(FAN_OPEN, 1, Folder("abc", "")) +
                               Event(FAN_OPEN, 2, Info(99, "what comes one day"));
    const FileEvents events = ParseEvents(buffer);
    ASSERT_EQ(events.size(), 3U);
    for (const cli::FileEvent& event : events) {
        EXPECT_FALSE(event.IsLost());
        EXPECT_TRUE(event.name.empty());
        EXPECT_FALSE(event.process);
    }
    EXPECT_TRUE(events[0].folder.empty());
    EXPECT_FALSE(events[1].folder.empty());
}

TEST(EventBuffer, TellsThatEventsWereLost) {
    const std::string buffer =
        Event(FAN_OPEN, 1, Folder("abc", "a")) + Event(FAN_Q_OVERFLOW, 0, "");
    const FileEvents events = ParseEvents(buffer);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_FALSE(events[0].IsLost());
    EXPECT_TRUE(events[1].IsLost());
}

/** Bytes with a number put in at a place. */
template <typename Number>
std::string With(std::string bytes, size_t place, Number number) {
    std::memcpy(bytes.data() + place, &number, sizeof(number));
    return bytes;
}

TEST(EventBuffer, CountsAsLostWhatIsNotInItsForm) {
    const std::string good = Event(FAN_OPEN, 1, Folder("abcdefgh", "name"));
    const size_t info = sizeof(fanotify_event_metadata);
    const size_t handle = info + sizeof(fanotify_event_info_header) + kFileSystem.size();
    const std::string wrong[] = {
        With<__u32>(good, 0, 0),
        With<__u32>(good, 0, 8),
        With<__u32>(good, 0, static_cast<__u32>(good.size() + 1)),
        With<__u32>(good, 0, ~0U),
        With<__u16>(good, 6, 8),
        With<__u16>(good, 6, 0xFFFF),
        With<__u16>(good, info + 2, 0),
        With<__u16>(good, info + 2, 3),
        With<__u16>(good, info + 2, 0xFFFF),
        With<__u32>(good, handle, MAX_HANDLE_SZ + 1),
        With<__u32>(good, handle, ~0U),
        With<__u32>(good, handle, 8 + 8),
        Event(FAN_OPEN, 1, Folder(std::string(MAX_HANDLE_SZ + 1, 'h'), "name")),
        // Shorter than a head; the next one would begin within it.
        Event(FAN_OPEN, 1, std::string("\x63\0\3\0\0\5\0\0", 8)),
        Event(FAN_OPEN, 1, "ab"),
        Event(FAN_OPEN, 1, Info(FAN_EVENT_INFO_TYPE_DFID_NAME, "")),
        Event(FAN_OPEN, 1, Info(FAN_EVENT_INFO_TYPE_DFID_NAME, kFileSystem + "ab")),
        Event(FAN_OPEN, 1,
              Info(FAN_EVENT_INFO_TYPE_DFID_NAME, kFileSystem + HandleOf("abcd") + "no end")),
        Event(FAN_OPEN, 1, Info(FAN_EVENT_INFO_TYPE_PIDFD, "ab")),
    };
    for (const std::string& each : wrong) {
        const std::string buffer = good + each + good;
        const FileEvents events = ParseEvents(buffer);
        ASSERT_GE(events.size(), 2U);
        EXPECT_FALSE(events.front().IsLost());
        EXPECT_TRUE(events.back().IsLost()) << &each - wrong;
        EXPECT_TRUE(events.back().folder.empty());
    }
}

TEST(EventBuffer, ReadsNothingBehindTheEnd) {
    const std::string whole = Event(FAN_OPEN, 1, Folder("abcdefgh", "name") + Process(-1));
    for (size_t size = 1; size < whole.size(); ++size) {
        // On the heap and no longer than that, so that sanitizers see it.
        const std::unique_ptr<char[]> part(new char[size]);
        std::memcpy(part.get(), whole.data(), size);
        const FileEvents events = ParseEvents({part.get(), size});
        ASSERT_EQ(events.size(), 1U);
        EXPECT_TRUE(events[0].IsLost()) << size;
    }
    EXPECT_TRUE(ParseEvents("").empty());
}

TEST(EventBuffer, RefusesAnotherVersionOfTheInterface) {
    EXPECT_THROW(ParseEvents(Event(FAN_OPEN, 1, "", FANOTIFY_METADATA_VERSION + 1)), cli::Failure);
}

}  // namespace
