#include "cli/options/list_options.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/options/common_options.h"
#include "cli/options/values.h"

namespace cli {
namespace {

constexpr double kDefaultWatchSeconds = 2;

void AddCondition(Parser& parser, Selection& selection, const std::string& name, bool contains,
                  bool negated) {
    parser.AddValue(name, "COLUMN=TEXT", [=, &selection](const auto& text) {
        selection.conditions.push_back(ParseCondition(name, text, contains, negated));
    });
}

void AddFlagged(Parser& parser, const std::string& name, Flagged& wanted) {
    parser.AddValue(name, "'yes', 'no' or 'only'",
                    [name, &wanted](const auto& text) { wanted = ParseFlagged(name, text); });
}

void AddSelection(Parser& parser, Selection& selection) {
    AddCondition(parser, selection, "--where", false, false);
    AddCondition(parser, selection, "--match", true, false);
    AddCondition(parser, selection, "--not-where", false, true);
    AddCondition(parser, selection, "--not-match", true, true);
    AddFlagged(parser, "--hidden", selection.hidden);
    AddFlagged(parser, "--folders", selection.folders);
    AddFlagged(parser, "--deleted", selection.deleted);
}

void AddOrder(Parser& parser, Question& question) {
    parser.AddValue("--sort", "a column",
                    [&question](const auto& text) { question.sort = ParseSortColumn(text); });
    parser.AddFlag("--reverse", question.reverse);
}

void AddFormats(Parser& parser, Options& options) {
    parser.AddValue("--format", "'table', 'json', 'jsonl' or 'csv'",
                    [&options](const auto& text) { TakeFormat(options, ParseFormat(text)); });
    AddJson(parser, options);
    parser.AddValue("--print0", "a column", [&options](const auto& text) {
        options.presentation.print0Column = ParseColumn("--print0", text);
        TakeFormat(options, Format::kPrint0);
    });
    parser.AddFlag("--pids", [&options] { TakeFormat(options, Format::kPids); });
}

void AddPresentation(Parser& parser, Presentation& presentation) {
    parser.AddValue("--limit", "a number",
                    [&presentation](const auto& text) { presentation.limit = ParseLimit(text); });
    parser.AddValue("--columns", "columns with commas between them",
                    [&presentation](const auto& text) {
                        presentation.columns = ParseColumns("--columns", text);
                    });
    parser.AddFlag("--no-header", [&presentation] { presentation.header = false; });
    parser.AddValue("--count-by", "columns with commas between them",
                    [&presentation](const auto& text) {
                        presentation.countBy = ParseColumns("--count-by", text);
                    });
}

bool NamesTime(const Options& options) {
    const auto has = [](const std::vector<Column>& columns) {
        return std::find(columns.begin(), columns.end(), Column::kTime) != columns.end();
    };
    const Presentation& presentation = options.presentation;
    const auto& conditions = options.question.selection.conditions;
    return has(presentation.columns) || has(presentation.countBy) ||
           (presentation.format == Format::kPrint0 && presentation.print0Column == Column::kTime) ||
           std::any_of(conditions.begin(), conditions.end(),
                       [](const Condition& each) { return each.column == Column::kTime; });
}

void Refuse(bool wrong, const char* text) {
    if (wrong) {
        throw UsageError(text);
    }
}

void CheckPresentation(const Presentation& presentation, bool sorted) {
    const Format format = presentation.format;
    const bool tabular = format == Format::kTable || format == Format::kCsv;
    const bool raw = format == Format::kPrint0 || format == Format::kPids;
    const bool counts = !presentation.countBy.empty();
    Refuse(!presentation.columns.empty() && !tabular,
           "--columns is for the formats table and csv; JSON always has every key");
    Refuse(!presentation.columns.empty() && counts,
           "--columns and --count-by can't be combined: the counted columns are what is shown");
    Refuse(!presentation.header && !tabular, "--no-header is for the formats table and csv");
    Refuse(counts && raw, "--count-by has the formats table, json, jsonl, csv");
    Refuse(counts && sorted, "--count-by is ordered by its counts; leave --sort out");
}

void CheckWatch(const Options& options) {
    const Format format = options.presentation.format;
    Refuse(!options.presentation.countBy.empty(),
           "--watch shows files; it can't be combined with --count-by");
    Refuse(options.quiet, "--watch and --quiet can't be combined");
    Refuse(format != Format::kTable && format != Format::kJsonl,
           "--watch has the formats table (on a terminal) and jsonl");
}

}  // namespace

void AddListOptions(Parser& parser, Options& options) {
    AddBy(parser, options);
    AddTimeout(parser, options);
    parser.AddFlag("--time", options.question.time);
    AddSelection(parser, options.question.selection);
    AddOrder(parser, options.question);
    AddFormats(parser, options);
    AddPresentation(parser, options.presentation);
    parser.AddValue("--watch", "a number of seconds", [&options](const auto& text) {
        options.watchSeconds = ParseSeconds("--watch", text);
    });
    parser.AddFlag("-q,--quiet", options.quiet);
    parser.AddFlag("--strict", options.strict);
}

void GiveWatchItsValue(std::vector<std::string>& arguments) {
    for (auto at = arguments.begin(); at != arguments.end() && *at != "--"; ++at) {
        if (*at != "--watch") {
            continue;
        }
        const auto next = at + 1;
        if (next != arguments.end() && LooksLikeNumber(*next)) {
            *at += "=" + *next;
            arguments.erase(next);
        } else {
            *at += fmt::format("={}", kDefaultWatchSeconds);
        }
    }
}

void CompleteListOptions(Options& options) {
    CheckPresentation(options.presentation, options.question.sort.has_value());
    if (options.watchSeconds) {
        CheckWatch(options);
    }
    options.question.time = options.question.time || NamesTime(options);
}

}  // namespace cli
