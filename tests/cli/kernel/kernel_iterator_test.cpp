// SPDX-License-Identifier: MIT
#include "cli/host/kernel/kernel_iterator.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <list>
#include <map>
#include <set>
#include <sstream>
#include <system_error>
#include <thread>
#include <tuple>
#include <vector>

#include "support/numbers.h"
#include "support/text.h"
#include "tests/cli/kernel/records_file.h"

namespace {

using cli::HeldFile;
using cli::KernelIterator;

// --- Records that a program would have written ---------------------------------------------------

KernelIterator IteratorOver(const std::string& records) {
    return KernelIterator(RecordsFile(records));
}

vorn_record OfProcess(unsigned pid) {
    vorn_record head{};
    head.pid = pid;
    return head;
}

/** Of each portion its records' pids. */
std::vector<std::vector<pid_t>> Portions(KernelIterator& iterator) {
    std::vector<std::vector<pid_t>> portions;
    std::string portion;
    while (iterator.Read(portion)) {
        std::string_view rest = portion;
        for (portions.emplace_back(); !rest.empty();) {
            portions.back().push_back(cli::TakeHeldFile(rest).pid);
        }
    }
    return portions;
}

TEST(KernelIteratorPortions, AreEmptyOfNothing) {
    KernelIterator iterator = IteratorOver("");
    EXPECT_TRUE(Portions(iterator).empty());
    EXPECT_TRUE(Portions(iterator).empty()) << "nor after the end";
}

TEST(KernelIteratorPortions, NeverSplitAProcess) {
    const std::string path(3000, 'x');
    for (const size_t each : {1, 2, 21, 22, 100}) {
        std::string records;
        for (unsigned pid = 1; pid <= 50; ++pid) {
            for (size_t i = 0; i < each; ++i) {
                records += Record(OfProcess(pid), path.substr(pid * i % 7));
            }
        }
        KernelIterator iterator = IteratorOver(records);
        std::map<pid_t, size_t> seen;
        const auto portions = Portions(iterator);
        EXPECT_GT(portions.size(), 2U);
        for (const auto& portion : portions) {
            std::map<pid_t, size_t> inPortion;
            for (const pid_t pid : portion) {
                ++inPortion[pid];
            }
            for (const auto& [pid, count] : inPortion) {
                EXPECT_EQ(count, each) << pid;
                seen[pid] += count;
            }
        }
        EXPECT_EQ(seen.size(), 50U);
    }
}

TEST(KernelIteratorPortions, AreWholeWhereverAReadEnds) {
    // One read of them is 64 KiB.
    for (size_t last = 1; last < 2 * sizeof(vorn_record); ++last) {
        std::string records = Record(OfProcess(1), std::string(4000, 'x'));
        while (records.size() < 65536 - 4200) {
            records += Record(OfProcess(2), "/volume1/x");
        }
        const size_t gap = 65536 - last - sizeof(vorn_record) - records.size();
        records += Record(OfProcess(2), std::string(gap, 'y')) +
                   Record(OfProcess(3), "/volume1/z") + Record(OfProcess(4), "/volume1/z");
        KernelIterator iterator = IteratorOver(records);
        std::string all;
        for (std::string portion; iterator.Read(portion);) {
            all += portion;
        }
        ASSERT_EQ(all, records) << last;
    }
}

TEST(KernelIteratorRecords, ComeInPiecesOfAProcess) {
    std::string records;
    while (records.size() < size_t{4} * 65536) {
        records += Record(OfProcess(1), "/volume1/x");
    }
    KernelIterator iterator = IteratorOver(records);
    std::string all;
    for (std::string piece; iterator.ReadRecords(piece);) {
        // One read, with what the last one has left of a record.
        EXPECT_LT(piece.size(), 65536U + sizeof(vorn_record) + 10);
        all += piece;
    }
    EXPECT_EQ(all, records);
    KernelIterator cutShort = IteratorOver(records + "x");
    std::string piece;
    EXPECT_THROW(while (cutShort.ReadRecords(piece)){}, std::system_error);
}

TEST(KernelIteratorPortions, AreRefusedWhereTheLastRecordIsCutShort) {
    const std::string record = Record(OfProcess(1), "/volume1/x");
    for (size_t size = 1; size < record.size(); ++size) {
        KernelIterator iterator = IteratorOver(record + record.substr(0, size));
        std::string portion;
        EXPECT_THROW(iterator.Read(portion), std::system_error) << size;
    }
}

TEST(KernelIteratorPortions, HaveEveryMember) {
    vorn_record head{};
    const std::string path = "/volume1/a\nb (deleted)";
    head.pid = 4194304;
    head.descriptor = 1048575;
    head.mode = S_IFDIR | 0750;
    head.device = 259U << 20 | 70000U;
    head.mount = 31;
    head.flags = VORN_RECORD_DELETED;
    head.inode = 1ULL << 60;
    const std::string record = Record(head, path);
    std::string_view rest = record;
    const HeldFile file = cli::TakeHeldFile(rest);
    EXPECT_TRUE(rest.empty());
    EXPECT_EQ(file.path, path);
    EXPECT_EQ(std::make_tuple(file.pid, file.descriptor, file.mode, file.mount, file.inode),
              std::make_tuple(4194304, 1048575, mode_t{S_IFDIR | 0750}, 31, ino_t{1ULL << 60}));
    EXPECT_EQ(file.device, makedev(259, 70000));
    EXPECT_TRUE(file.deleted);
    EXPECT_FALSE(file.isInnerPath);
}

TEST(KernelIteratorPortions, TellThatReadingFails) {
    KernelIterator iterator{support::Descriptor(open("/", O_RDONLY | O_CLOEXEC))};
    std::string portion;
    EXPECT_THROW(iterator.Read(portion), std::system_error);
}

// --- What the kernel says of this very process ---------------------------------------------------

class KernelIteratorTest : public testing::Test {
protected:
    /** All of this process, in the kernel's order; portion keeps their paths. */
    std::vector<HeldFile> Own(KernelIterator::Kind kind, const KernelIterator::Scope& scope) {
        auto [iterator, reason] = KernelIterator::Open(kind, scope);
        EXPECT_EQ(iterator == nullptr, !reason.empty());
        std::vector<HeldFile> own;
        std::string portion;
        while (iterator && iterator->Read(portion)) {
            std::string_view rest = portions_.emplace_back(portion);
            while (!rest.empty()) {
                const HeldFile file = cli::TakeHeldFile(rest);
                if (file.pid == getpid()) {
                    own.push_back(file);
                }
            }
        }
        return own;
    }

    void SetUp() override {
        const auto opened = KernelIterator::Open(KernelIterator::Kind::kDescriptors, {});
        if (!opened.iterator) {
            GTEST_SKIP() << opened.reason;
        }
    }

private:
    std::list<std::string> portions_;
};

std::string LinkTarget(const std::string& link) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    return {target.data(), length > 0 ? static_cast<size_t>(length) : 0};
}

dev_t DeviceOf(const char* path) {
    struct stat info {};
    EXPECT_EQ(stat(path, &info), 0) << path;
    return info.st_dev;
}

/** As /proc/self/fdinfo has it. */
int MountOf(int descriptor) {
    std::ifstream info("/proc/self/fdinfo/" + std::to_string(descriptor));
    for (std::string word; info >> word;) {
        if (word == "mnt_id:") {
            info >> word;
            return std::stoi(word);
        }
    }
    return 0;
}

std::vector<dev_t> FileSystemsOf(const std::vector<support::Descriptor>& descriptors) {
    std::set<dev_t> devices;
    for (const auto& descriptor : descriptors) {
        devices.insert(DeviceOf(fmt::format("/proc/self/fd/{}", descriptor.Get()).c_str()));
    }
    return {devices.begin(), devices.end()};
}

TEST_F(KernelIteratorTest, TellsOfEveryKindOfDescriptorWhatProcTells) {
    std::string folder = testing::TempDir() + "/vorn-kernel-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string deleted = folder + "/deleted";
    int pipes[2];
    ASSERT_EQ(pipe2(pipes, O_CLOEXEC), 0);
    const std::vector<support::Descriptor> held = [&] {
        std::vector<support::Descriptor> all;
        all.emplace_back(pipes[0]);
        all.emplace_back(pipes[1]);
        all.emplace_back(memfd_create("/volume1/x", MFD_CLOEXEC));
        all.emplace_back(open(folder.c_str(), O_PATH | O_CLOEXEC));
        all.emplace_back(open("/dev/shm", O_RDONLY | O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
        all.emplace_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        all.emplace_back(open("/proc/self/status", O_RDONLY | O_CLOEXEC));
        all.emplace_back(open(deleted.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
        return all;
    }();
    unlink(deleted.c_str());

    std::map<int, HeldFile> told;
    for (const HeldFile& file :
         Own(KernelIterator::Kind::kDescriptors, {FileSystemsOf(held), false, true})) {
        EXPECT_TRUE(told.emplace(file.descriptor, file).second) << file.descriptor;
    }
    for (const auto& descriptor : held) {
        ASSERT_TRUE(descriptor);
        const int fd = descriptor.Get();
        const HeldFile& file = told[fd];
        EXPECT_EQ(file.path, LinkTarget("/proc/self/fd/" + std::to_string(fd)));
        struct stat info {};
        ASSERT_EQ(fstat(fd, &info), 0);
        EXPECT_EQ(file.mode, info.st_mode) << file.path;
        EXPECT_EQ(file.inode, info.st_ino) << file.path;
        EXPECT_EQ(file.mount, MountOf(fd)) << file.path;
        EXPECT_EQ(file.deleted, info.st_nlink == 0 && file.path.front() == '/' &&
                                    support::EndsWith(file.path, " (deleted)") &&
                                    !support::StartsWith(file.path, "/memfd:"))
            << file.path;
    }
    struct stat pipeInfo {};
    ASSERT_EQ(fstat(pipes[0], &pipeInfo), 0);
    EXPECT_EQ(told[pipes[0]].device, pipeInfo.st_dev);
    rmdir(folder.c_str());
}

TEST_F(KernelIteratorTest, IsRefusedForMoreFileSystemsThanItHasRoomFor) {
    KernelIterator::Scope scope;
    scope.fileSystems.assign(VORN_MOST_FILE_SYSTEMS, makedev(8, 1));
    EXPECT_TRUE(KernelIterator::Open(KernelIterator::Kind::kDescriptors, scope).iterator);
    scope.fileSystems.push_back(makedev(8, 1));
    EXPECT_FALSE(KernelIterator::Open(KernelIterator::Kind::kDescriptors, scope).iterator);
}

TEST_F(KernelIteratorTest, TellsOfSocketsAndOfThreadsOnlyWhereAskedTo) {
    const support::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    std::thread([&] {
        ASSERT_EQ(unshare(CLONE_FILES), 0);
        const pid_t self = gettid();
        for (const bool sockets : {false, true}) {
            std::map<pid_t, int> told;
            for (const HeldFile& file : Own(KernelIterator::Kind::kDescriptors,
                                            {{DeviceOf("/proc/self/fd/0"), 1}, sockets, false})) {
                told[file.thread] += S_ISSOCK(file.mode) && file.descriptor == socket.Get() ? 1 : 0;
                EXPECT_TRUE(file.path.empty() || file.path == "anon_inode:[io_uring]");
            }
            EXPECT_EQ(told[getpid()], sockets ? 1 : 0);
            EXPECT_EQ(told[self], sockets ? 1 : 0);
        }
    }).join();
}

TEST_F(KernelIteratorTest, LeavesOutWhatIsNotNamedLikeAVolumeWhereAskedTo) {
    const support::Descriptor other(open("/dev/null", O_RDONLY | O_CLOEXEC));
    for (const HeldFile& file : Own(KernelIterator::Kind::kDescriptors, {})) {
        EXPECT_TRUE(support::StartsWith(file.path, "/volume")) << file.path;
    }
}

/** Addresses, inode and, as the kernel has none for what it makes up, a path from the root. */
using Mapping = std::tuple<uint64_t, uint64_t, ino_t, std::string>;

// 7f5e8c000000-7f5e8c021000 r--p 00000000 fe:01 1838 /usr/lib/x86_64-linux-gnu/libc.so.6
std::vector<Mapping> MappingsInProc() {
    std::vector<Mapping> mappings;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::string range;
        std::string skipped;
        ino_t inode = 0;
        fields >> range >> skipped >> skipped >> skipped >> inode;
        if (inode == 0) {
            continue;
        }
        std::string_view rest = range;
        const auto begin = support::TakeNumber<uint64_t>(rest, 16).value_or(0);
        rest.remove_prefix(1);
        const auto end = support::TakeNumber<uint64_t>(rest, 16).value_or(0);
        mappings.emplace_back(begin, end, inode, LinkTarget("/proc/self/map_files/" + range));
    }
    return mappings;
}

std::vector<dev_t> MappedFileSystems() {
    std::set<dev_t> devices;
    for (const auto& [begin, end, inode, path] : MappingsInProc()) {
        devices.insert(DeviceOf(fmt::format("/proc/self/map_files/{:x}-{:x}", begin, end).c_str()));
    }
    return {devices.begin(), devices.end()};
}

TEST_F(KernelIteratorTest, TellsOfEveryMappingWhatProcTells) {
    const support::Descriptor file(memfd_create("mapped", MFD_CLOEXEC));
    ASSERT_EQ(ftruncate(file.Get(), 4096), 0);
    void* mapped = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file.Get(), 0);
    ASSERT_NE(mapped, MAP_FAILED);
    const std::vector<Mapping> expected = MappingsInProc();
    EXPECT_GT(expected.size(), 10U);

    std::map<uint64_t, HeldFile> told;
    for (const HeldFile& each :
         Own(KernelIterator::Kind::kMappings, {MappedFileSystems(), false, true})) {
        EXPECT_EQ(each.descriptor, -1);
        told[each.begin] = each;
    }
    for (const auto& [begin, end, inode, path] : expected) {
        const HeldFile& each = told[begin];
        EXPECT_EQ(each.end, end) << path;
        if (!each.isInnerPath) {
            EXPECT_EQ(each.inode, inode) << path;
            EXPECT_EQ(each.path, path);
        }
    }
    EXPECT_TRUE(
        support::StartsWith(told[reinterpret_cast<uintptr_t>(mapped)].path, "/memfd:mapped"));
    munmap(mapped, 4096);
}

}  // namespace
