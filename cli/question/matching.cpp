// SPDX-License-Identifier: MIT
#include <algorithm>
#include <ctime>

#include "cli/question/facts_text.h"
#include "cli/question/selection.h"

namespace cli {
namespace {

char Upper(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool Contains(const std::string& text, const std::string& part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return Upper(a) == Upper(b); }) != text.end();
}

bool IsWithin(const Bound& bound, std::int64_t number) {
    if (bound.age) {
        number = std::time(nullptr) - number;
    }
    switch (bound.is) {
        case Bound::Is::kLess:
            return number < bound.number;
        case Bound::Is::kAtMost:
            return number <= bound.number;
        case Bound::Is::kMore:
            return number > bound.number;
        case Bound::Is::kAtLeast:
            return number >= bound.number;
        case Bound::Is::kEqual:
            break;
    }
    return number == bound.number;
}

bool MatchesMember(const Condition& condition, OpenedFile& file) {
    const auto member = static_cast<VORN::FileHandle::MEMBER>(condition.column);
    return condition.contains ? file.isMatchKeyword(condition.text, member)
                              : file.isMatchSame(condition.text, member);
}

}  // namespace

bool Matches(const Condition& condition, OpenedFile& file, const Known& known) {
    if (condition.bound) {
        const auto numbers = ColumnNumbers(file, condition.column, known);
        return std::any_of(numbers.begin(), numbers.end(),
                           [&](std::int64_t number) { return IsWithin(*condition.bound, number); });
    }
    if (IsMember(condition.column)) {
        return MatchesMember(condition, file);
    }
    const std::string text = ColumnText(file, condition.column, known);
    if (condition.contains) {
        return Contains(text, condition.text);
    }
    return text == condition.text ||
           (condition.column == Column::kMode && HasMode(known.facts, condition.text));
}

}  // namespace cli
