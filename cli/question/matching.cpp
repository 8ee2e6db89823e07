// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cctype>
#include <ctime>

#include "cli/question/facts_text.h"
#include "cli/question/selection.h"

namespace cli {
namespace {

/** As the library matches: what toupper knows as letters. */
bool Contains(std::string_view text, std::string_view part) {
    const auto upper = [](char letter) { return static_cast<char>(std::toupper(letter)); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [&](char a, char b) { return upper(a) == upper(b); }) != text.end();
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

}  // namespace

bool Matches(const Condition& condition, const FileRecord& file) {
    if (condition.bound) {
        const auto numbers = ColumnNumbers(file, condition.column);
        return std::any_of(numbers.begin(), numbers.end(),
                           [&](std::int64_t number) { return IsWithin(*condition.bound, number); });
    }
    const std::string text = ColumnText(file, condition.column);
    if (condition.contains) {
        return Contains(text, condition.text);
    }
    return text == condition.text ||
           (condition.column == Column::kMode && HasMode(file.facts, condition.text));
}

}  // namespace cli
