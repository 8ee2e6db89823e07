// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "tests/unit/support/library_test.h"

using namespace VORN::FileHandle;

using TextCheck = unit::LibraryTest;

TEST_F(TextCheck, TellsPathsUnderAVolume) {
    const struct {
        const char* path;
        bool isUnder;
    } cases[] = {
        {"/volume1/share/a.txt", true},
        {"/volume1/", true},
        {"/volume1", false},
        {"/volume12", false},
        {"/volume12/x", true},
        {"/volumeUSB1/usbshare/f", true},
        {"/volume/x", false},
        {"/volume//x", true},
        {"/volume//", true},
        {"/volume/", false},
        {"/volume/x/y", true},
        {"/volumes", false},
        {"/Volume1/a", false},
        {"/VOLUME1/a", false},
        {"/tmp/volume1/a", false},
        {"/volum", false},
        {"", false},
        {"/", false},
        {"volume1/a", false},
        {"/volumX1/a", false},
        {"/volumX", false},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(PathBeginWithVolume(test.path), test.isUnder) << test.path;
    }
}

TEST_F(TextCheck, ThrowsForABareVolumeName) {
    EXPECT_THROW(PathBeginWithVolume("/volume"), std::out_of_range);
    try {
        PathBeginWithVolume("/volume");
    } catch (const std::out_of_range& error) {
        EXPECT_THAT(error.what(), ::testing::HasSubstr("basic_string::substr"));
    }
}

TEST_F(TextCheck, TellsNumericalNames) {
    const struct {
        const char* name;
        bool isNumerical;
    } cases[] = {
        {"1", true},     {"1234", true},  {"-3", true},  {"+3", true},
        {"12abc", true}, {"  7", true},   {"007", true}, {"99999999999999999999", true},
        {"0", false},    {"00", false},   {"-0", false}, {"", false},
        {"abc", false},  {"self", false}, {"x1", false}, {"0x10", false},
        {" ", false},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(IsNumericalDir(test.name), test.isNumerical) << test.name;
    }
}

TEST_F(TextCheck, TellsValidNumbers) {
    const struct {
        const char* text;
        bool valid;
    } cases[] = {
        {"", false},
        {"0", true},
        {"0042", true},
        {"1234", true},
        {"2147483647", true},
        {"2147483648", false},
        {"99999999999", false},
        {"-1", false},
        {"+1", false},
        {" 1", false},
        {"1 ", false},
        {"12a", false},
        {"a", false},
        {"1.5", false},
        {"0x10", false},
        {"00000000002147483647", true},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(IsValidNumber(test.text), test.valid) << "\"" << test.text << "\"";
    }
    EXPECT_FALSE(IsValidNumber(std::string("1\0002", 3)));
}
