// SPDX-License-Identifier: MIT
// The checker of the flood notices what it is there for.

#include "tests/flood/truth.h"

#include <gtest/gtest.h>

namespace {

using flood::Moment;
using VORN::FileHandle::ENUM_BY_SHARE;
using VORN::FileHandle::ENUM_BY_VOLUME;
using VORN::FileHandle::OpenedFile;

std::list<OpenedFile> Records(const std::vector<std::pair<std::string, std::string>>& texts) {
    std::list<OpenedFile> list;
    for (const auto& [pid, path] : texts) {
        OpenedFile file;
        file.setPid(pid);
        file.setFullPath(path);
        list.push_back(file);
    }
    return list;
}

/** What is wrong with records of one slot, whose counters are given; no other slot was used. */
std::size_t Wrong(const std::vector<std::pair<std::string, std::string>>& texts, Moment before,
                  Moment after, std::size_t slot = 3, int enumby = ENUM_BY_SHARE) {
    std::vector<Moment> first(flood::kSlots), last(flood::kSlots);
    first[slot] = before;
    last[slot] = after;
    auto list = Records(texts);
    flood::Verdict verdict;
    Check(list, enumby, first, last, verdict);
    return verdict.wrong.size();
}

constexpr Moment kOpen{5, 5, 4, 4};     // generation 5 is open
constexpr Moment kClosing{5, 5, 5, 4};  // it is about to be closed
constexpr Moment kNext{6, 6, 5, 5};     // generation 6 is open

TEST(FloodChecker, TakesEachStableRecordOnce) {
    EXPECT_EQ(Wrong({{"77", "/volume1/photo/s3-g5-p77"}}, kOpen, kOpen), 0U);
    EXPECT_EQ(Wrong({{"77", "/volume1/photo/s3-g5-p77.renamed (deleted)"}}, kOpen, kOpen), 0U);
}

TEST(FloodChecker, NoticesAStableRecordThatIsMissingOrDoubled) {
    EXPECT_EQ(Wrong({}, kOpen, kOpen), 1U);
    const std::pair<std::string, std::string> record("77", "/volume1/photo/s3-g5-p77");
    EXPECT_EQ(Wrong({record, record}, kOpen, kOpen), 1U);
}

TEST(FloodChecker, LeavesOpenWhatChangedDuringTheCall) {
    for (const auto& [before, after] : {std::pair(kOpen, kClosing), {kOpen, kNext}}) {
        EXPECT_EQ(Wrong({}, before, after), 0U);
        EXPECT_EQ(Wrong({{"77", "/volume1/photo/s3-g5-p77"}}, before, after), 0U);
    }
}

TEST(FloodChecker, NoticesWhatWasClosedBeforeOrNeverOpened) {
    EXPECT_EQ(Wrong({{"77", "/volume1/s3-g4-p77"}}, kOpen, kClosing), 1U);
    EXPECT_EQ(Wrong({{"77", "/volume1/s3-g6-p77"}}, kOpen, kClosing), 1U);
    EXPECT_EQ(Wrong({{"77", "/volume1/photo/other"}}, kOpen, kClosing), 1U);
}

TEST(FloodChecker, NoticesARecordOfAnotherProcess) {
    EXPECT_EQ(Wrong({{"78", "/volume1/s3-g5-p77"}}, kOpen, kClosing), 1U);
    EXPECT_EQ(Wrong({{"78", "/volume1/photo/ssh-p77"}}, kOpen, kClosing), 1U);
    EXPECT_EQ(Wrong({{"77", "/volume1/photo/ssh-p77"}}, kOpen, kClosing), 0U);
    EXPECT_EQ(Wrong({{"77", "/volume1/photo/ssh-p77 (deleted)"}}, kOpen, kClosing), 0U);
    EXPECT_EQ(Wrong({{"7", "/volume1/photo/ssh-p77"}}, kOpen, kClosing), 1U);
    EXPECT_EQ(Wrong({{"77", "/volume1/photo/ssh-p7"}}, kOpen, kClosing), 1U);
}

TEST(FloodChecker, NoticesWhatIsListedByAShareThatIsGone) {
    const std::pair<std::string, std::string> record("77", "/volume2/exported/s901-g5-p77");
    EXPECT_EQ(Wrong({record}, kOpen, kOpen, flood::kUnsharedSlot), 1U);
    EXPECT_EQ(Wrong({}, kOpen, kOpen, flood::kUnsharedSlot), 0U);
    EXPECT_EQ(Wrong({record}, kOpen, kOpen, flood::kUnsharedSlot, ENUM_BY_VOLUME), 0U);
    EXPECT_EQ(Wrong({}, kOpen, kOpen, flood::kUnsharedSlot, ENUM_BY_VOLUME), 1U);
    EXPECT_EQ(Wrong({record}, kOpen, kNext, flood::kUnsharedSlot), 0U);
}

}  // namespace
