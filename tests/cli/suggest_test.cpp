// SPDX-License-Identifier: MIT
#include "cli/text/suggest.h"

#include <gtest/gtest.h>

namespace {

TEST(NearWord, FindsWhatWasMeant) {
    const std::vector<std::string> kWords = {"service", "pid", "user", "host", "path", "filename"};
    const std::pair<std::string, std::string> kCases[] = {
        {"servcie", "service"},        {"sevice", "service"}, {"usr", "user"}, {"paht", "path"},
        {"filenames", "filename"},     {"xyz", ""},           {"", ""},        {"p", ""},
        {std::string(10000, 'p'), ""},
    };
    for (const auto& [word, meant] : kCases) {
        EXPECT_EQ(cli::NearWord(word, kWords), meant) << word;
    }
}

TEST(NearWord, IsOfferedInBrackets) {
    EXPECT_EQ(cli::DidYouMean("sotr", {"sort"}), " (did you mean 'sort'?)");
    EXPECT_EQ(cli::DidYouMean("elephant", {"sort"}), "");
}

}  // namespace
