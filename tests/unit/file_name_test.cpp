// SPDX-License-Identifier: MIT
// The version whose answers the library gives; Boost's own default changes one day.
#define BOOST_FILESYSTEM_VERSION 3

#include <gtest/gtest.h>

#include <boost/filesystem/path.hpp>
#include <string>

#include "src/filehandle_internal.h"

namespace {

constexpr char kCharacters[] = {'/', '.', 'a'};
constexpr size_t kLength = 8;

void CompareWithBoost(std::string& path) {
    ASSERT_EQ(VORN::FileHandle::FileName(path), boost::filesystem::path(path).filename().native())
        << path;
    if (path.size() == kLength) {
        return;
    }
    for (const char character : kCharacters) {
        path.push_back(character);
        ASSERT_NO_FATAL_FAILURE(CompareWithBoost(path));
        path.pop_back();
    }
}

TEST(FileName, IsBoostsForAllShortPaths) {
    std::string path;
    CompareWithBoost(path);
}

}  // namespace
