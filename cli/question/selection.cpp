#include "cli/question/selection.h"

#include <algorithm>
#include <array>

#include "cli/host/deleted.h"
#include "support/text.h"

namespace cli {
namespace {

bool Matches(const Condition& condition, OpenedFile& file) {
    const auto member = static_cast<VORN::FileHandle::MEMBER>(condition.column);
    return condition.contains ? file.isMatchKeyword(condition.text, member)
                              : file.isMatchSame(condition.text, member);
}

bool ConditionsHold(const std::vector<Condition>& conditions, OpenedFile& file) {
    enum State { kNotAsked, kNoneMatched, kMatched };
    std::array<State, VORN::FileHandle::MEMBER_TIME + 1> columns{};
    for (const Condition& condition : conditions) {
        if (condition.negated) {
            if (Matches(condition, file)) {
                return false;
            }
            continue;
        }
        State& state = columns[static_cast<size_t>(condition.column)];
        if (state != kMatched) {
            state = Matches(condition, file) ? kMatched : kNoneMatched;
        }
    }
    return std::find(columns.begin(), columns.end(), kNoneMatched) == columns.end();
}

bool FlagAllows(Flagged wanted, bool flag) {
    return wanted == Flagged::kYes || flag == (wanted == Flagged::kOnly);
}

bool LiesInAny(const std::vector<std::string>& roots, const std::string& path, bool deleted) {
    const std::string_view named = deleted ? WithoutDeletedMark(path) : std::string_view(path);
    return std::any_of(roots.begin(), roots.end(), [&](const std::string& root) {
        return support::IsAtOrBelow(named, root) || support::IsAtOrBelow(path, root);
    });
}

}  // namespace

bool IsSelected(const Selection& selection, OpenedFile& file, bool deleted) {
    return FlagAllows(selection.hidden, file.isHidden()) &&
           FlagAllows(selection.folders, file.isFolder()) &&
           FlagAllows(selection.deleted, deleted) && ConditionsHold(selection.conditions, file) &&
           (selection.paths.empty() || LiesInAny(selection.paths, file.getFullPath(), deleted));
}

}  // namespace cli
