// SPDX-License-Identifier: MIT
#include "cli/question/selection.h"

#include <gtest/gtest.h>

#include "support/text.h"
#include "tests/cli/records.h"

namespace {

using cli::Column;
using cli::Condition;
using cli::Flagged;
using cli::Selection;

struct ConditionCase {
    std::vector<Condition> conditions;
    bool selected;
};

constexpr bool kContains = true;
constexpr bool kEqual = false;
constexpr bool kNot = true;

TEST(Selection, TakesAnyOfAColumnAndAllOfTheColumns) {
    const ConditionCase kCases[] = {
        {{}, true},
        {{{Column::kUser, "alice", kEqual, false}}, true},
        {{{Column::kUser, "ALICE", kEqual, false}}, false},
        {{{Column::kUser, "ALI", kContains, false}}, true},
        {{{Column::kUser, "bob", kEqual, false}}, false},
        {{{Column::kUser, "bob", kEqual, false}, {Column::kUser, "ali", kContains, false}}, true},
        {{{Column::kUser, "alice", kEqual, false}, {Column::kUser, "bob", kEqual, false}}, true},
        {{{Column::kUser, "alice", kEqual, false}, {Column::kService, "FTP", kEqual, false}},
         false},
        {{{Column::kUser, "alice", kEqual, false}, {Column::kService, "SMB", kEqual, false}}, true},
        {{{Column::kUser, "alice", kEqual, kNot}}, false},
        {{{Column::kUser, "bob", kEqual, kNot}}, true},
        {{{Column::kUser, "alice", kEqual, false}, {Column::kHost, ".2.", kContains, kNot}}, false},
    };
    auto file = Record("/volume1/photo/a.jpg", "alice", "SMB");
    for (const ConditionCase& each : kCases) {
        Selection selection;
        selection.conditions = each.conditions;
        EXPECT_EQ(cli::IsSelected(selection, file), each.selected);
    }
}

TEST(Selection, TakesFlaggedFilesAsAsked) {
    struct Case {
        Flagged wanted;
        bool plain;
        bool flagged;
    };
    auto plain = Record("/volume1/photo/a.jpg");
    auto hidden = Record("/volume1/.snapshot/a.jpg");
    hidden.hidden = true;
    auto folder = Record("/volume1/photo");
    folder.folder = true;
    auto deleted = plain;
    deleted.deleted = true;
    for (const Case& each : {Case{Flagged::kYes, true, true}, Case{Flagged::kNo, true, false},
                             Case{Flagged::kOnly, false, true}}) {
        Selection selection;
        selection.hidden = each.wanted;
        EXPECT_EQ(cli::IsSelected(selection, plain), each.plain);
        EXPECT_EQ(cli::IsSelected(selection, hidden), each.flagged);
        selection = {};
        selection.folders = each.wanted;
        EXPECT_EQ(cli::IsSelected(selection, plain), each.plain);
        EXPECT_EQ(cli::IsSelected(selection, folder), each.flagged);
        selection = {};
        selection.deleted = each.wanted;
        EXPECT_EQ(cli::IsSelected(selection, plain), each.plain);
        EXPECT_EQ(cli::IsSelected(selection, deleted), each.flagged);
    }
}

TEST(Selection, LooksBelowPathsByWholeElements) {
    struct Case {
        const char* path;
        const char* root;
        bool below;
    };
    const Case kCases[] = {
        {"/volume1/photo", "/volume1/photo", true},
        {"/volume1/photo/a", "/volume1/photo", true},
        {"/volume1/photos/a", "/volume1/photo", false},
        {"/volume1", "/volume1/photo", false},
        {"/volume1/photo", "/", true},
    };
    for (const Case& each : kCases) {
        EXPECT_EQ(support::IsAtOrBelow(each.path, each.root), each.below) << each.path;
    }
}

TEST(Selection, KnowsADeletedFileByItsName) {
    Selection selection;
    selection.paths = {"/volume1/photo/a.jpg"};
    auto file = Record("/volume1/photo/a.jpg (deleted)");
    EXPECT_FALSE(cli::IsSelected(selection, file));
    file.deleted = true;
    EXPECT_TRUE(cli::IsSelected(selection, file));
}

}  // namespace
