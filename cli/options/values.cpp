// SPDX-License-Identifier: MIT
#include "cli/options/values.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/options/measures.h"
#include "cli/text/escape.h"
#include "cli/text/suggest.h"
#include "support/numbers.h"

namespace cli {
namespace {

constexpr double kLeastSeconds = 0.1;
constexpr double kMostSeconds = 86400;
constexpr size_t kMostJobs = 1024;

/** Position of a text among the words that an option takes. */
size_t Choose(const std::string& option, const std::string& text,
              const std::vector<std::string>& words) {
    const auto found = std::find(words.begin(), words.end(), text);
    if (found == words.end()) {
        throw UsageError(fmt::format("{} can't be '{}'{}; it takes: {}", option,
                                     Escaped(text, true), DidYouMean(text, words),
                                     fmt::join(words, ", ")));
    }
    return static_cast<size_t>(found - words.begin());
}

}  // namespace

const std::vector<std::string>& ByNames() {
    static const std::vector<std::string> kNames = {"share", "volume"};
    return kNames;
}

const std::vector<std::string>& FormatNames() {
    static const std::vector<std::string> kNames = {"table", "json", "jsonl", "csv"};
    return kNames;
}

const std::vector<std::string>& FlaggedNames() {
    static const std::vector<std::string> kNames = {"yes", "no", "only"};
    return kNames;
}

const std::vector<std::string>& SourceNames() {
    static const std::vector<std::string> kNames = {"auto", "iterator", "walk"};
    return kNames;
}

SourceKind ParseSource(const std::string& text) {
    return static_cast<SourceKind>(Choose("--source", text, SourceNames()));
}

VORN::FileHandle::ENUM_BY ParseBy(const std::string& text) {
    return static_cast<VORN::FileHandle::ENUM_BY>(Choose("--by", text, ByNames()));
}

Format ParseFormat(const std::string& text) {
    return static_cast<Format>(Choose("--format", text, FormatNames()));
}

Flagged ParseFlagged(const std::string& option, const std::string& text) {
    return static_cast<Flagged>(Choose(option, text, FlaggedNames()));
}

Column ParseColumn(const std::string& option, const std::string& text) {
    return static_cast<Column>(Choose(option, text, ColumnNames()));
}

std::vector<Column> ParseColumns(const std::string& option, const std::string& text) {
    std::vector<Column> columns;
    size_t begin = 0;
    while (begin <= text.size()) {
        const size_t end = std::min(text.find(',', begin), text.size());
        const Column column = ParseColumn(option, text.substr(begin, end - begin));
        if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
            throw UsageError(fmt::format("{} names '{}' twice", option, ColumnName(column)));
        }
        columns.push_back(column);
        begin = end + 1;
    }
    return columns;
}

std::vector<Column> ParseSummed(const std::string& text) {
    std::vector<Column> columns = ParseColumns("--sum", text);
    for (const Column column : columns) {
        if (MeasureOf(column) != Measure::kSize) {
            throw UsageError(
                fmt::format("--sum can't be '{}'; it takes: size, space", ColumnName(column)));
        }
    }
    return columns;
}

ShownChoice ParseShown(const std::string& option, const std::string& text) {
    ShownChoice choice;
    std::string own;
    size_t begin = 0;
    while (begin <= text.size()) {
        const size_t end = std::min(text.find(',', begin), text.size());
        const std::string name = text.substr(begin, end - begin);
        if (name.rfind('+', 0) == 0) {
            choice.added.push_back(ParseColumn(option, name.substr(1)));
        } else {
            own += (own.empty() ? "" : ",") + name;
        }
        begin = end + 1;
    }
    if (!own.empty() || choice.added.empty()) {
        choice.own = ParseColumns(option, own);
    }
    return choice;
}

Condition ParseSince(const std::string& text) {
    const auto age = ParseDuration(text);
    if (!age) {
        throw UsageError(fmt::format("--since takes a time such as 90s, 1.5h or 7d, not '{}'",
                                     Escaped(text, true)));
    }
    return {Column::kStarted, text, false, false, Bound{Bound::Is::kAtMost, *age, true}};
}

int ParseSchema(const std::string& text) {
    return static_cast<int>(Choose("--schema", text, {"1", "2"})) + 1;
}

size_t ParseLimit(const std::string& text) {
    const size_t limit = support::ParseNumber<size_t>(text).value_or(0);
    if (limit == 0) {
        throw UsageError(
            fmt::format("--limit takes a number from 1 up, not '{}'", Escaped(text, true)));
    }
    return limit;
}

size_t ParseJobs(const std::string& text) {
    const size_t jobs = support::ParseNumber<size_t>(text).value_or(0);
    if (jobs == 0 || jobs > kMostJobs) {
        throw UsageError(fmt::format("--jobs takes a number from 1 to {}, not '{}'", kMostJobs,
                                     Escaped(text, true)));
    }
    return jobs;
}

bool LooksLikeNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789.") == std::string::npos;
}

double ParseSeconds(const std::string& option, const std::string& text) {
    const double seconds = support::ParseNumber<double>(text).value_or(0);
    if (!LooksLikeNumber(text) || seconds < kLeastSeconds || seconds > kMostSeconds) {
        throw UsageError(fmt::format("{} takes seconds from {} to {}, not '{}'", option,
                                     kLeastSeconds, kMostSeconds, Escaped(text, true)));
    }
    return seconds;
}

}  // namespace cli
