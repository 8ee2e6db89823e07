// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <utility>

#include "cli/failure.h"
#include "cli/options/measures.h"
#include "cli/options/values.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

struct Operator {
    std::string_view text;
    Bound::Is is;
};

/** The longer ones first. */
constexpr Operator kOperators[] = {{"<=", Bound::Is::kAtMost},
                                   {">=", Bound::Is::kAtLeast},
                                   {"<", Bound::Is::kLess},
                                   {">", Bound::Is::kMore},
                                   {"=", Bound::Is::kEqual}};

const Operator& OperatorAt(std::string_view text) {
    for (const Operator& each : kOperators) {
        if (text.substr(0, each.text.size()) == each.text) {
            return each;
        }
    }
    return kOperators[std::size(kOperators) - 1];
}

std::optional<Bound> ParseTimeBound(const std::string& text, Bound::Is is) {
    if (const auto moment = ParseMoment(text)) {
        return Bound{is, *moment};
    }
    // A number of seconds is an age; equal to the second is nobody's meaning.
    const auto age = is == Bound::Is::kEqual ? std::nullopt : ParseDuration(text);
    return age ? std::optional(Bound{is, *age, true}) : std::nullopt;
}

std::optional<Bound> ParseBound(Column column, const std::string& text, Bound::Is is) {
    const Measure measure = MeasureOf(column);
    if (measure == Measure::kTime) {
        return ParseTimeBound(text, is);
    }
    const auto number = measure == Measure::kNone ? std::nullopt : ParseSize(text);
    const bool isPlain = text.find_first_not_of("0123456789") == std::string::npos;
    return number && (measure == Measure::kSize || isPlain) ? std::optional(Bound{is, *number})
                                                            : std::nullopt;
}

const char* WhatToCompareWith(Measure measure) {
    switch (measure) {
        case Measure::kSize:
            return "a size such as 4096 or 1.5G";
        case Measure::kTime:
            return "an age such as 90s, 1.5h or 7d, or a day such as 2024-03-07";
        default:
            return "a number";
    }
}

}  // namespace

Condition ParseCondition(const std::string& option, const std::string& text, bool contains,
                         bool negated) {
    const size_t end = text.find_first_of("=<>");
    if (end == std::string::npos) {
        throw UsageError(fmt::format("{} takes COLUMN=TEXT, such as user=alice, not '{}'", option,
                                     Escaped(text, true)));
    }
    const Column column = ParseColumn(option, text.substr(0, end));
    const Operator& found = OperatorAt(std::string_view(text).substr(end));
    Condition condition = {column, text.substr(end + found.text.size()), contains, negated};
    if (condition.text.empty()) {
        throw UsageError(fmt::format("{} {} needs a text behind the '{}'", option,
                                     Escaped(text, true), found.text));
    }
    const bool compares = found.is != Bound::Is::kEqual;
    const Measure measure = MeasureOf(column);
    if (compares && measure == Measure::kNone) {
        throw UsageError(
            fmt::format("{} can't be compared; pid, fd, inode, size, space, started, modified and "
                        "time can",
                        ColumnName(column)));
    }
    if (compares || !contains) {
        condition.bound = ParseBound(column, condition.text, found.is);
    }
    if (compares && !condition.bound) {
        throw UsageError(fmt::format("{} can be compared with {}, not with '{}'",
                                     ColumnName(column), WhatToCompareWith(measure),
                                     Escaped(condition.text, true)));
    }
    return condition;
}

}  // namespace cli
