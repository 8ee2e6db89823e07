#include "cli/options/values.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/text/escape.h"
#include "cli/text/suggest.h"
#include "support/numbers.h"

namespace cli {
namespace {

constexpr double kLeastSeconds = 0.1;
constexpr double kMostSeconds = 86400;

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

std::vector<std::string> MemberNames() {
    std::vector<std::string> names = SortColumnNames();
    names.emplace_back(ColumnName(Column::kTime));
    return names;
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

Column ParseSortColumn(const std::string& text) {
    return static_cast<Column>(Choose("--sort", text, SortColumnNames()));
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

Condition ParseCondition(const std::string& option, const std::string& text, bool contains,
                         bool negated) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        throw UsageError(fmt::format("{} takes COLUMN=TEXT, such as user=alice, not '{}'", option,
                                     Escaped(text, true)));
    }
    const auto column = static_cast<Column>(Choose(option, text.substr(0, equals), MemberNames()));
    if (equals + 1 == text.size()) {
        throw UsageError(fmt::format("{} {} needs a text behind the '='", option, text));
    }
    return {column, text.substr(equals + 1), contains, negated};
}

size_t ParseLimit(const std::string& text) {
    const size_t limit = support::ParseNumber<size_t>(text).value_or(0);
    if (limit == 0) {
        throw UsageError(
            fmt::format("--limit takes a number from 1 up, not '{}'", Escaped(text, true)));
    }
    return limit;
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
