// SPDX-License-Identifier: MIT
#include "cli/options/measures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "cli/question/facts_text.h"
#include "cli/text/number_text.h"

namespace {

TEST(Measures, AreReadAsPeopleWriteThem) {
    const std::pair<const char*, std::optional<std::int64_t>> kSizes[] = {
        {"0", 0},
        {"4096", 4096},
        {"1k", 1024},
        {"1.5G", 1610612736},
        {"2MiB", 2 << 20},
        {"3MB", 3 << 20},
        {"512B", 512},
        {"9223372036854775807", INT64_MAX},
        {"", {}},
        {"G", {}},
        {"-1", {}},
        {"1X", {}},
        {"1GG", {}},
        {"1e3", {}},
        {".5", {}},
        {"9999999P", {}},
        {"1 G", {}},
        {"nan", {}},
        {"18446744073709551616", {}},
    };
    for (const auto& [text, bytes] : kSizes) {
        EXPECT_EQ(cli::ParseSize(text), bytes) << text;
    }
    const std::pair<const char*, std::optional<std::int64_t>> kDurations[] = {
        {"90", 90},     {"90s", 90}, {"1.5h", 5400}, {"2m", 120}, {"7d", 604800},
        {"1w", 604800}, {"1y", {}},  {"", {}},       {"h", {}},   {"-1h", {}},
    };
    for (const auto& [text, seconds] : kDurations) {
        EXPECT_EQ(cli::ParseDuration(text), seconds) << text;
    }
}

TEST(Measures, OfTimeAreThoseThatAreShown) {
    std::mt19937 random(7);
    for (int i = 0; i < 1000; ++i) {
        const auto moment = static_cast<std::time_t>(random());
        // An hour that the clock goes through twice has one text.
        EXPECT_EQ(cli::LocalTime(*cli::ParseMoment(cli::LocalTime(moment))),
                  cli::LocalTime(moment));
        EXPECT_EQ(cli::ParseLocalTime(cli::LocalTime(moment)),
                  cli::ParseMoment(cli::LocalTime(moment)));
    }
    EXPECT_EQ(cli::ParseMoment("2024-03-07"), cli::ParseMoment("2024/03/07 00:00:00"));
    for (const char* text : {"", "-", "2024", "2024-13-01", "2024-03-07x", "1h"}) {
        EXPECT_EQ(cli::ParseMoment(text), std::nullopt) << text;
    }
    EXPECT_EQ(cli::ParseLocalTime("-"), std::nullopt);
    EXPECT_EQ(cli::UtcTime(1709820309), "2024-03-07T14:05:09Z");
}

TEST(ShortSize, HasThreeDigitsAndIsNeverLess) {
    const std::pair<std::uint64_t, const char*> kCases[] = {
        {0, "0"},
        {999, "999"},
        {1000, "1.0K"},
        {1024, "1.0K"},
        {1025, "1.1K"},
        {4097, "4.1K"},
        {10240, "10K"},
        {10241, "11K"},
        {999 << 10, "999K"},
        {(999 << 10) + 1, "1.0M"},
        {3ULL << 30, "3.0G"},
        {UINT64_MAX, "16E"},
    };
    for (const auto& [bytes, text] : kCases) {
        EXPECT_EQ(cli::ShortSize(bytes), text) << bytes;
    }
    std::mt19937_64 random(7);
    for (int i = 0; i < 10000; ++i) {
        const std::uint64_t bytes = random() >> (4 + random() % 60);
        const std::string text = cli::ShortSize(bytes);
        EXPECT_LE(text.size(), 4U) << bytes;
        const auto shown = static_cast<double>(*cli::ParseSize(text));
        EXPECT_GE(shown * (1 + 1e-9), static_cast<double>(bytes)) << bytes;
        EXPECT_LE(shown, static_cast<double>(bytes) * 1.12 + 1) << bytes;
    }
}

}  // namespace
