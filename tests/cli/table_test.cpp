// SPDX-License-Identifier: MIT
#include "cli/answer/formats/table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

namespace {

std::string Print(cli::Table& table) {
    table.Fit();
    std::string out;
    for (size_t row = 0; row < table.Rows(); ++row) {
        table.AppendRow(out, row);
    }
    return out;
}

void AddRow(cli::Table& table, std::initializer_list<const char*> cells,
            cli::Style style = cli::Style::kPlain) {
    table.BeginRow(style);
    for (const char* cell : cells) {
        table.Add(cell);
    }
}

cli::Terminal Wide() {
    cli::Terminal terminal;
    terminal.utf8 = true;
    return terminal;
}

TEST(Table, AlignsByColumnsOfTheTerminal) {
    cli::Table table(3, Wide());
    table.AlignRight(1);
    AddRow(table, {"\xE5\x86\x99\xE7\x9C\x9F", "7", "x"});
    AddRow(table, {"cafe\xCC\x81s", "4711", "two words"});
    EXPECT_EQ(Print(table),
              "\xE5\x86\x99\xE7\x9C\x9F      7  x\n"
              "cafe\xCC\x81s  4711  two words\n");
}

TEST(Table, ShortensToTheTerminal) {
    cli::Terminal terminal = Wide();
    terminal.width = 14;
    cli::Table table(2, terminal);
    AddRow(table, {"SMB", "/photo/holiday/a.jpg"});
    EXPECT_EQ(Print(table), "SMB  /pho\xE2\x80\xA6.jpg\n");
}

TEST(Table, EndsNoLineWithBlanks) {
    cli::Terminal terminal = Wide();
    terminal.colour = true;
    cli::Table table(3, terminal);
    AddRow(table, {"FILES", "USER", ""}, cli::Style::kHeading);
    AddRow(table, {"7", "alice ", "##"});
    AddRow(table, {"1", "", ""});
    EXPECT_EQ(Print(table),
              "\x1B[1mFILES  USER\x1B[0m\n"
              "7      alice\\x20  ##\n"
              "1\n");
}

TEST(Table, ColoursOnlyWhereAskedTo) {
    cli::Terminal terminal = Wide();
    terminal.colour = true;
    cli::Table table(1, terminal);
    AddRow(table, {"PATH"}, cli::Style::kHeading);
    AddRow(table, {"a"});
    EXPECT_EQ(Print(table), "\x1B[1mPATH\x1B[0m\na\n");
}

struct FitCase {
    std::vector<size_t> widths;
    size_t total;
    std::vector<size_t> fitted;
};

TEST(FittedWidths, CutTheWidestFirst) {
    const FitCase kCases[] = {
        {{}, 10, {}},
        {{5, 5}, 12, {5, 5}},
        {{5, 50}, 20, {5, 13}},
        {{30, 40, 50}, 64, {20, 20, 20}},
        {{3, 4, 5, 10, 40}, 20, {2, 2, 2, 3, 3}},
        {{9, 9, 9}, 1, {1, 1, 1}},
    };
    for (const FitCase& each : kCases) {
        std::vector<size_t> fitted = cli::FittedWidths(each.widths, each.total);
        if (each.fitted == std::vector<size_t>{2, 2, 2, 3, 3}) {
            std::sort(fitted.begin(), fitted.end());
        }
        EXPECT_EQ(fitted, each.fitted);
    }
}

}  // namespace
