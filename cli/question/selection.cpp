// SPDX-License-Identifier: MIT
#include "cli/question/selection.h"

#include <algorithm>

#include "cli/host/deleted.h"
#include "support/text.h"

namespace cli {
namespace {

/** Whether several conditions on a column are alternatives: "more than" and "less than" aren't. */
bool IsAlternative(const Condition& condition) {
    return !condition.bound || condition.bound->is == Bound::Is::kEqual;
}

bool ConditionsHold(const std::vector<Condition>& conditions, const FileRecord& file) {
    ColumnSet asked;
    ColumnSet matched;
    for (const Condition& condition : conditions) {
        const auto column = static_cast<size_t>(condition.column);
        if (condition.negated || !IsAlternative(condition)) {
            if (Matches(condition, file) == condition.negated) {
                return false;
            }
        } else if (!matched.test(column)) {
            asked.set(column);
            matched.set(column, Matches(condition, file));
        }
    }
    return asked == matched;
}

bool FlagAllows(Flagged wanted, bool flag) {
    return wanted == Flagged::kYes || flag == (wanted == Flagged::kOnly);
}

bool LiesInAny(const std::vector<std::string>& roots, std::string_view path, bool deleted) {
    const std::string_view named = deleted ? WithoutDeletedMark(path) : path;
    return std::any_of(roots.begin(), roots.end(), [&](const std::string& root) {
        return support::IsAtOrBelow(named, root) || support::IsAtOrBelow(path, root);
    });
}

}  // namespace

bool IsSelected(const Selection& selection, const FileRecord& file) {
    return FlagAllows(selection.hidden, file.hidden) &&
           FlagAllows(selection.folders, file.folder) &&
           FlagAllows(selection.deleted, file.deleted) &&
           ConditionsHold(selection.conditions, file) &&
           (selection.paths.empty() || LiesInAny(selection.paths, file.fullPath, file.deleted));
}

bool SelectsAll(const Selection& selection) {
    return selection.conditions.empty() && selection.paths.empty() &&
           selection.hidden == Flagged::kYes && selection.folders == Flagged::kYes &&
           selection.deleted == Flagged::kYes;
}

SelectionSteps InSteps(Selection selection) {
    SelectionSteps steps;
    std::swap(steps.byFolder.folders, selection.folders);
    std::vector<Condition> conditions;
    conditions.swap(selection.conditions);
    for (Condition& condition : conditions) {
        Selection& step = condition.column == Column::kFolder ? steps.byFolder
                          : condition.column == Column::kTime ? steps.byTime
                          : IsFact(condition.column)          ? steps.byFacts
                                                              : selection;
        step.conditions.push_back(std::move(condition));
    }
    steps.atOnce = std::move(selection);
    return steps;
}

}  // namespace cli
