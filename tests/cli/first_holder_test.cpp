// SPDX-License-Identifier: MIT
// Whether something is in use: one holder decides, and what fails on the way never makes it free.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "cli/failure.h"
#include "cli/question/holders/process_source.h"
#include "tests/cli/kernel/records_file.h"
#include "tests/platform/support/child.h"

namespace {

using cli::KernelIterator;
using cli::SourceKind;
using cli::Wanted;

/** More than some reads of an iterator. */
constexpr size_t kManyRecords = 20000;

/** A folder that is asked about, and one beside it. */
class FirstHolder : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(mkdtemp(root_.data()), nullptr);
        for (const char* name : {"asked", "other"}) {
            std::filesystem::create_directory(root_ + "/" + name);
            std::ofstream(Path(name)) << "x";
        }
        mounts_.Add(cli::ReadKernelFile("/proc/self/mountinfo").value_or(""), "/", true);
        targets_.emplace(std::vector{root_ + "/asked"}, mounts_);
        targets_->Prepare();
    }
    void TearDown() override { std::filesystem::remove_all(root_); }

    std::string Path(const std::string& folder) const { return root_ + "/" + folder + "/file"; }

    /** What the kernel would write of a process that holds the file of a folder. */
    std::string RecordOf(pid_t pid, const std::string& folder, unsigned descriptor = 3) const {
        const auto identity = cli::IdentityAt(AT_FDCWD, Path(folder).c_str());
        vorn_record head{};
        head.pid = static_cast<__u32>(pid);
        head.thread = head.pid;
        head.descriptor = descriptor;
        head.mode = S_IFREG;
        head.device = static_cast<__u32>(major(identity->device) << 20 | minor(identity->device));
        head.mount = static_cast<__u32>(identity->mount);
        head.inode = identity->inode;
        return Record(head, Path(folder));
    }
    std::string Others(pid_t pid) const {
        std::string records;
        for (size_t i = 0; i < kManyRecords; ++i) {
            records += RecordOf(pid, "other");
        }
        return records;
    }

    /** What is found where the kernel's passes tell these records. */
    cli::Holders Find(const std::vector<pid_t>& pids, const std::string& descriptors,
                      Wanted wanted = Wanted::kWhether, SourceKind kind = SourceKind::kAuto,
                      const std::string& mappings = "") {
        const auto open = [&](KernelIterator::Kind pass, const KernelIterator::Scope&) {
            const bool first = pass == KernelIterator::Kind::kDescriptors;
            const support::Descriptor records = RecordsFile(first ? descriptors : mappings);
            support::Descriptor& kept = first ? descriptors_ : mappings_;
            // Shares its position, which tells how much was read.
            kept = support::Descriptor(dup(records.Get()));
            return KernelIterator::Opened{
                std::make_unique<KernelIterator>(support::Descriptor(dup(records.Get()))), ""};
        };
        cli::Holders holders;
        cli::ProcessSource(pids, cli::Workers(1), kind, open).Find(*targets_, wanted, holders);
        return holders;
    }
    static size_t BytesRead(const support::Descriptor& records) {
        return records ? static_cast<size_t>(lseek(records.Get(), 0, SEEK_CUR)) : 0;
    }

    Child HolderOf(const std::string& folder) const {
        return Child([this, folder] { open(Path(folder).c_str(), O_RDONLY); });
    }

    std::string root_ = "/dev/shm/vorn-first-XXXXXX";
    cli::MountTable mounts_;
    std::optional<cli::Targets> targets_;
    support::Descriptor descriptors_; /**< of the last search */
    support::Descriptor mappings_;
};

constexpr size_t kOneRead = size_t{64} * 1024;

TEST_F(FirstHolder, EndsThePassesOfTheKernel) {
    const Child other = HolderOf("other");
    // In the middle of a process that holds a great deal.
    const std::string records =
        RecordOf(other.Pid(), "other") + RecordOf(other.Pid(), "asked") + Others(other.Pid());
    ASSERT_EQ(Find({other.Pid()}, records).rows.size(), 1U);
    EXPECT_EQ(BytesRead(descriptors_), kOneRead);
    EXPECT_FALSE(mappings_) << "the other pass has not begun";
    // Whoever wants to know all is told all.
    ASSERT_EQ(Find({other.Pid()}, records, Wanted::kPids).rows.size(), 1U);
    EXPECT_EQ(BytesRead(descriptors_), records.size());
}

TEST_F(FirstHolder, MayBeOneOfAMapping) {
    const Child other = HolderOf("other");
    vorn_record head{};
    std::memcpy(&head, RecordOf(other.Pid(), "asked", 0).data(), sizeof(head));
    head.begin = 4096;
    head.end = 8192;
    const std::string mapped = Record(head, Path("asked")) + Others(other.Pid());
    const auto found = Find({other.Pid()}, "", Wanted::kWhether, SourceKind::kAuto, mapped);
    ASSERT_EQ(found.rows.size(), 1U);
    EXPECT_EQ(found.rows.front().reason, cli::Reason::kMapping);
    EXPECT_EQ(BytesRead(mappings_), kOneRead);
    // Though the other pass has failed.
    const std::string cut = RecordOf(other.Pid(), "other") + "x";
    EXPECT_EQ(Find({other.Pid()}, cut, Wanted::kWhether, SourceKind::kIterator, mapped).rows.size(),
              1U);
}

TEST_F(FirstHolder, IsNobodyWhoDoesNotCountAndNothingThatTakesAFurtherLook) {
    const Child other = HolderOf("other");
    const std::string others = Others(other.Pid());
    vorn_record nameless{};
    std::memcpy(&nameless, RecordOf(other.Pid(), "asked").data(), sizeof(nameless));
    for (const std::string& undecided :
         {RecordOf(getpid(), "asked"), RecordOf(other.Pid(), "other"), Record(nameless, "")}) {
        const std::string records = undecided + others;
        EXPECT_TRUE(Find({other.Pid()}, records).rows.empty());
        EXPECT_EQ(BytesRead(descriptors_), records.size());
    }
}

TEST_F(FirstHolder, EndsTheWalk) {
    const Child one = HolderOf("asked");
    const Child other([this] {
        EXPECT_EQ(chdir(std::filesystem::path(Path("asked")).parent_path().c_str()), 0);
    });
    const std::vector pids = {one.Pid(), other.Pid()};
    const auto found = [&](Wanted wanted) {
        return Find(pids, "", wanted, SourceKind::kWalk).rows;
    };
    EXPECT_EQ(found(Wanted::kPids).size(), 2U);
    ASSERT_EQ(found(Wanted::kWhether).size(), 1U);
    EXPECT_EQ(found(Wanted::kWhether).front().pid, one.Pid());
}

TEST_F(FirstHolder, EndsWhatOtherThreadsAreReading) {
    const Child one = HolderOf("asked");
    const cli::KernelHoldings nothing;
    const std::unordered_map<ino_t, cli::UsedFile> noSockets;
    for (const bool found : {false, true}) {
        cli::Decision decision(*targets_, Wanted::kWhether, {});
        found ? decision.NoteFound() : static_cast<void>(0);
        cli::Holders holders;
        std::unordered_set<ino_t> seen;
        cli::ProcessReader({*targets_, Wanted::kWhether, nothing, noSockets, decision}, one.Pid())
            .Read(holders, seen);
        EXPECT_EQ(holders.rows.empty(), found);
    }
}

TEST_F(FirstHolder, IsFoundByTheWalkWhereAPassFailsMidway) {
    const Child one = HolderOf("other");
    const Child holder = HolderOf("asked");
    const std::string whole = RecordOf(one.Pid(), "other") + RecordOf(holder.Pid(), "asked");
    const std::string cut = whole.substr(0, whole.size() - 1);
    for (const Wanted wanted : {Wanted::kWhether, Wanted::kPids, Wanted::kNames}) {
        const auto found = Find({one.Pid(), holder.Pid()}, cut, wanted).rows;
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found.front().pid, holder.Pid());
        EXPECT_THROW(Find({one.Pid(), holder.Pid()}, cut, wanted, SourceKind::kIterator),
                     cli::Failure);
    }
    // One of before the failure decides, whatever else could be told.
    EXPECT_EQ(Find({one.Pid(), holder.Pid()}, RecordOf(holder.Pid(), "asked") + cut,
                   Wanted::kWhether, SourceKind::kIterator)
                  .rows.size(),
              1U);
}

TEST_F(FirstHolder, IsFoundByTheWalkWhereThePassOfMappingsFailsMidway) {
    const Child holder([this] {
        const int file = open(Path("asked").c_str(), O_RDONLY);
        mmap(nullptr, 1, PROT_READ, MAP_PRIVATE, file, 0);
        close(file);
    });
    std::string cut = RecordOf(holder.Pid(), "other");
    cut.pop_back();
    for (const Wanted wanted : {Wanted::kWhether, Wanted::kPids, Wanted::kNames}) {
        const auto found = Find({holder.Pid()}, "", wanted, SourceKind::kAuto, cut).rows;
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found.front().reason, cli::Reason::kMapping);
        EXPECT_THROW(Find({holder.Pid()}, "", wanted, SourceKind::kIterator, cut), cli::Failure);
    }
}

}  // namespace
