// SPDX-License-Identifier: MIT
#include "cli/text/escape.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace std::string_literals;

struct EscapeCase {
    std::string bytes;
    std::string utf8;
    std::string ascii;
};

const EscapeCase kEscapeCases[] = {
    {"", "", ""},
    {"plain.txt", "plain.txt", "plain.txt"},
    {"two words", "two words", "two words"},
    {"two  blanks", "two \\x20blanks", "two \\x20blanks"},
    {" lead", "\\x20lead", "\\x20lead"},
    {"trail ", "trail\\x20", "trail\\x20"},
    {"a\\b", "a\\\\b", "a\\\\b"},
    {"a\nb\tc\rd", "a\\nb\\tc\\rd", "a\\nb\\tc\\rd"},
    {"\x1B[31m", "\\x1B[31m", "\\x1B[31m"},
    {"\x7F", "\\x7F", "\\x7F"},
    {"\x01", "\\x01", "\\x01"},
    {"caf\xC3\xA9", "caf\xC3\xA9", "caf\\u{E9}"},
    {"\xC2\x9B", "\\u{9B}", "\\u{9B}"},
    {"\x9B", "\\x9B", "\\x9B"},
    {"a\xE2\x80\xAEtxt", "a\\u{202E}txt", "a\\u{202E}txt"},
    {"\xE2\x81\xA6", "\\u{2066}", "\\u{2066}"},
    {"\xE2\x80\xA8", "\\u{2028}", "\\u{2028}"},
    {"\xE2\x80\xA6", "\\u{2026}", "\\u{2026}"},
    {"\xEF\xBB\xBF", "\\u{FEFF}", "\\u{FEFF}"},
    {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80", "\\u{1F600}"},
    {"a\xC2\xA0z", "a\\u{A0}z", "a\\u{A0}z"},
    {"a\xE3\x80\x80z", "a\\u{3000}z", "a\\u{3000}z"},
    {"a\xE2\x80\x8Dz", "a\\u{200D}z", "a\\u{200D}z"},
    {"a\xE2\x80\x8Cz", "a\\u{200C}z", "a\\u{200C}z"},
    {"a\xE2\x80\x8Bz", "a\\u{200B}z", "a\\u{200B}z"},
    {"a\xC2\xADz", "a\\u{AD}z", "a\\u{AD}z"},
    {"\xE3\x85\xA4", "\\u{3164}", "\\u{3164}"},
    {"\xE1\x85\x9F", "\\u{115F}", "\\u{115F}"},
    {"\xE2\xA0\x80", "\\u{2800}", "\\u{2800}"},
    {"x\xEF\xB8\x8F", "x\\u{FE0F}", "x\\u{FE0F}"},
    {"x\xCD\x8F", "x\\u{34F}", "x\\u{34F}"},
    {"x\xF3\xA0\x84\x80", "x\\u{E0100}", "x\\u{E0100}"},
    {"\xC3", "\\xC3", "\\xC3"},
    {"\xED\xA0\x80", "\\xED\\xA0\\x80", "\\xED\\xA0\\x80"},
    {"\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80", "\\xF4\\x90\\x80\\x80"},
    {"\xC0\xAF", "\\xC0\\xAF", "\\xC0\\xAF"},
    {"\\x41", "\\\\x41", "\\\\x41"},
};

TEST(Escape, ShowsEachTextAsHarmlessLine) {
    for (const EscapeCase& each : kEscapeCases) {
        EXPECT_EQ(cli::Escaped(each.bytes, true), each.utf8);
        EXPECT_EQ(cli::Escaped(each.bytes, false), each.ascii);
    }
}

TEST(Escape, TurnsBackByteForByte) {
    for (const EscapeCase& each : kEscapeCases) {
        EXPECT_EQ(cli::Unescaped(each.utf8), each.bytes);
        EXPECT_EQ(cli::Unescaped(each.ascii), each.bytes);
    }
}

TEST(Escape, TurnsRandomBytesBackAndKeepsThemOnOneLineWithoutGaps) {
    std::mt19937 random(20240307);
    const std::string kNasty[] = {" ", "\\", "\xE2\x80\xAE", "\xCC\x81", "\\x41", "\\u{41}", "}"};
    for (int round = 0; round < 20000; ++round) {
        std::string bytes;
        while (bytes.size() < random() % 40) {
            bytes += random() % 3 == 0 ? kNasty[random() % std::size(kNasty)]
                                       : std::string(1, static_cast<char>(1 + random() % 255));
        }
        for (const bool utf8 : {false, true}) {
            const std::string escaped = cli::Escaped(bytes, utf8);
            ASSERT_EQ(cli::Unescaped(escaped), bytes);
            ASSERT_EQ(escaped.find('\n'), std::string::npos);
            ASSERT_EQ(escaped.find("  "), std::string::npos);
        }
    }
}

TEST(Escape, LeavesBackslashesThatBeginNoEscape) {
    for (const char* text :
         {"\\", "\\q", "\\x", "\\x4", "\\xZZ", "\\u{}", "\\u{110000}", "\\u{41"}) {
        EXPECT_EQ(cli::Unescaped(text), text);
    }
}

TEST(DisplayWidth, CountsColumnsOfTheTerminal) {
    const std::pair<std::string, size_t> kCases[] = {
        {"", 0},
        {"abc", 3},
        {"caf\xC3\xA9", 4},
        {"cafe\xCC\x81", 4},
        {"\xE5\x86\x99\xE7\x9C\x9F", 4},
        {"\xF0\x9F\x98\x80", 2},
        {"\\u{202E}", 8},
    };
    for (const auto& [text, width] : kCases) {
        EXPECT_EQ(cli::DisplayWidth(text), width) << text;
    }
}

struct ShortenCase {
    std::string text;
    size_t width;
    std::string shortened;
};

TEST(Shortened, LeavesTheMiddleOutInWholeCharactersAndEscapes) {
    const std::string ellipsis = "\xE2\x80\xA6";
    const ShortenCase kCases[] = {
        {"abcdefghij", 10, "abcdefghij"},
        {"abcdefghij", 9, "abcd" + ellipsis + "ghij"},
        {"abcdefghij", 4, "a" + ellipsis + "ij"},
        {"abcdefghij", 1, ellipsis},
        {"abcdefghij", 0, ""},
        {"\\x01\\x02\\x03", 9, "\\x01" + ellipsis + "\\x03"},
        {"\\x01\\x02\\x03", 8, ellipsis + "\\x03"},
        {"\xE5\x86\x99\xE7\x9C\x9F\xE5\x86\x99", 5, "\xE5\x86\x99" + ellipsis + "\xE5\x86\x99"},
        {"\xE5\x86\x99\xE7\x9C\x9F\xE5\x86\x99", 4, ellipsis + "\xE5\x86\x99"},
        {"cafe\xCC\x81 cafe\xCC\x81", 9, "cafe\xCC\x81 cafe\xCC\x81"},
        {"e\xCC\x81"s + "abcde\xCC\x81", 3, "e\xCC\x81" + ellipsis + "e\xCC\x81"},
    };
    for (const ShortenCase& each : kCases) {
        EXPECT_EQ(cli::Shortened(each.text, each.width, true), each.shortened);
    }
    EXPECT_EQ(cli::Shortened("abcdefghij", 8, false), "ab\\...ij");
}

}  // namespace
