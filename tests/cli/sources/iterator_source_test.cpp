// SPDX-License-Identifier: MIT
#include "cli/question/sources/iterator_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/kernel/records_file.h"
#include "vorn/platform/error.h"

namespace {

constexpr unsigned kNobodysPid = 0x7FFFFFFF;

cli::IteratorSource SourceOver(support::Descriptor records) {
    return cli::IteratorSource(std::make_unique<cli::KernelIterator>(std::move(records)));
}

vorn_record Head(unsigned descriptor = 3, unsigned mode = S_IFREG, unsigned flags = 0) {
    vorn_record head{};
    head.pid = static_cast<__u32>(getpid());
    head.descriptor = descriptor;
    head.mode = mode;
    head.flags = flags;
    return head;
}

vorn_record OfProcess(unsigned pid) {
    vorn_record head = Head();
    head.pid = pid;
    return head;
}

struct Kept {
    std::string path;
    bool folder;
    bool operator==(const Kept& other) const {
        return path == other.path && folder == other.folder;
    }
};

void PrintTo(const Kept& kept, std::ostream* out) {
    *out << kept.path << (kept.folder ? " (folder)" : "");
}

/** What a source makes of records, all of this very process. */
std::vector<Kept> KeptOf(cli::RecordSource& source) {
    cli::Files records;
    cli::RecordTexts texts;
    while (source.Next(records, texts) > 0) {
    }
    std::vector<Kept> kept;
    for (auto& file : records) {
        EXPECT_EQ(file.process->pid, std::to_string(getpid()));
        kept.push_back({std::string(file.fullPath), file.folder});
    }
    return kept;
}

TEST(IteratorSource, KeepsWhatTheLibraryWouldKeep) {
    std::string records = Record(Head(0), "/volume1/standard-input");
    for (const char* path :
         {"/volume1/a", "/volume1/a", "/volumes/b", "/volume/c", "/volume1", "/volume/d/e",
          "/volumes", "/etc/volume1/f", "/volume12/\n (deleted)"}) {
        records += Record(Head(), path);
    }
    cli::IteratorSource source = SourceOver(RecordsFile(records));
    const std::vector<Kept> kept = {{"/volume1/a", false},
                                    {"/volume1/a", false},
                                    {"/volumes/b", false},
                                    {"/volume/d/e", false},
                                    {"/volume12/\n (deleted)", false}};
    EXPECT_EQ(KeptOf(source), kept);
    EXPECT_EQ(source.Notice(), "");
}

TEST(IteratorSource, TellsFoldersThatHaveNotBeenDeleted) {
    cli::IteratorSource source = SourceOver(
        RecordsFile(Record(Head(3, S_IFDIR | 0755), "/volume1/a") +
                    Record(Head(4, S_IFDIR | 0755, VORN_RECORD_DELETED), "/volume1/b (deleted)") +
                    Record(Head(5, S_IFDIR | 0755), "/volume1/c (deleted)") +
                    Record(Head(6, S_IFLNK | 0755), "/volume1/d")));
    const std::vector<Kept> kept = {{"/volume1/a", true},
                                    {"/volume1/b (deleted)", false},
                                    {"/volume1/c (deleted)", true},
                                    {"/volume1/d", false}};
    EXPECT_EQ(KeptOf(source), kept);
    EXPECT_TRUE(source.TellsFolders());
}

TEST(IteratorSource, NamesWhoHoldsTheBareVolume) {
    cli::IteratorSource source = SourceOver(
        RecordsFile(Record(Head(), "/volume") + Record(OfProcess(kNobodysPid), "/volume")));
    EXPECT_TRUE(KeptOf(source).empty());
    EXPECT_EQ(source.Notice(),
              "left out an object named \"/volume\", which is in no volume; held open by: " +
                  std::to_string(getpid()));
}

TEST(IteratorSource, LeavesOutProcessesThatProcDoesNotShow) {
    cli::IteratorSource source = SourceOver(
        RecordsFile(Record(OfProcess(kNobodysPid), "/volume1/a") + Record(Head(), "/volume1/b") +
                    Record(OfProcess(kNobodysPid - 1), "/volume1/c")));
    EXPECT_EQ(KeptOf(source), (std::vector<Kept>{{"/volume1/b", false}}));
}

TEST(IteratorSource, FailsOnceAndIsOverThen) {
    cli::IteratorSource source =
        SourceOver(support::Descriptor(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    cli::Files records;
    cli::RecordTexts texts;
    KLIBCErrSetEx(KLIBC_ERR_INTERNAL, "test", 1);
    EXPECT_EQ(source.Next(records, texts), -1);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_RESOURCE);
    EXPECT_EQ(source.Next(records, texts), 0);
    EXPECT_TRUE(records.empty());
}

}  // namespace
