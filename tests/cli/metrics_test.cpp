// SPDX-License-Identifier: MIT
#include "cli/answer/metrics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/cli/records.h"

namespace {

TEST(LabelValue, IsEscapedUtf8) {
    const std::pair<std::string, std::string> kCases[] = {
        {"SMB", "SMB"},
        {"a\"b\\c\nd", "a\\\"b\\\\c\\nd"},
        {"caf\xC3\xA9", "caf\xC3\xA9"},
        {"a\xFFz", "a\xEF\xBF\xBDz"},
    };
    for (const auto& [text, value] : kCases) {
        std::string out;
        cli::AppendLabelValue(out, text);
        EXPECT_EQ(out, value);
    }
}

TEST(Place, IsTheShareOrTheVolume) {
    auto file = Record("/volume1/photo/a/b");
    EXPECT_EQ(cli::PlaceOf(file), "/volume1");
    file.path = "photo/a/b";
    EXPECT_EQ(cli::PlaceOf(file), "photo");
    file.path = "photo";
    EXPECT_EQ(cli::PlaceOf(file), "photo");
}

/** Series of the open files with their values. */
std::vector<std::string> Series(cli::Snapshot& snapshot, const cli::Question& question = {}) {
    std::istringstream text(cli::MetricsText(snapshot, question, {}, 0.5));
    std::vector<std::string> series;
    for (std::string line; std::getline(text, line);) {
        if (line.rfind("vorn_openfiles_files{", 0) == 0) {
            series.push_back(line);
        }
    }
    return series;
}

TEST(Metrics, CountNamesThatLookAlikeAsOneSeries) {
    cli::Snapshot snapshot;
    snapshot.files.push_back(Record("x/a", "\xFE", "SMB"));
    snapshot.files.push_back(Record("x/b", "\xFF", "SMB"));
    EXPECT_EQ(Series(snapshot),
              std::vector<std::string>{
                  "vorn_openfiles_files{share=\"x\",service=\"SMB\",user=\"\xEF\xBF\xBD\"} 2"});
}

TEST(Metrics, AddUsersUpWhereNobodyAsksForThem) {
    cli::Snapshot snapshot;
    snapshot.files.push_back(Record("x/a", "alice", "SMB"));
    snapshot.files.push_back(Record("x/b", "bob", "SMB"));
    cli::Question question;
    question.asked.connection = false;
    EXPECT_EQ(Series(snapshot, question),
              std::vector<std::string>{"vorn_openfiles_files{share=\"x\",service=\"SMB\"} 2"});
}

TEST(Metrics, AreBoundedAndLoseNoFile) {
    cli::Snapshot snapshot;
    constexpr size_t kUsers = cli::kMostSeries + 500;
    for (size_t user = 0; user < kUsers; ++user) {
        snapshot.files.push_back(Record("x/a", "user" + std::to_string(user), "SMB"));
    }
    snapshot.files.push_back(Record("x/b", "user1400", "SMB"));
    const std::vector<std::string> series = Series(snapshot);
    ASSERT_EQ(series.size(), cli::kMostSeries);
    const std::string begin = "vorn_openfiles_files{share=\"";
    EXPECT_EQ(series.front(), begin + "x\",service=\"SMB\",user=\"user1400\"} 2");
    EXPECT_EQ(series.back(), begin + "(other)\",service=\"(other)\",user=\"(other)\"} 501");
}

}  // namespace
