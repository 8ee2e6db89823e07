// SPDX-License-Identifier: MIT
#include "cli/options/list_options.h"

#include <fmt/format.h>

#include <set>

#include "cli/answer/files.h"
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

void AddOrder(Parser& parser, Question& question) {
    parser.AddValue("--sort", "columns with commas between them", [&question](const auto& text) {
        question.sort = ParseColumns("--sort", text);
    });
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
    parser.AddValue("-o,--columns", "columns with commas between them",
                    [&presentation](const auto& text) {
                        ShownChoice choice = ParseShown("--columns", text);
                        if (!choice.own.empty()) {
                            presentation.columns = std::move(choice.own);
                        }
                        presentation.added.insert(presentation.added.end(), choice.added.begin(),
                                                  choice.added.end());
                    });
    parser.AddFlag("--wide", presentation.wide);
    parser.AddValue("--group-by", "a column", [&presentation](const auto& text) {
        presentation.group = ParseColumn("--group-by", text);
    });
    parser.AddFlag("--header", presentation.jsonHeader);
    parser.AddFlag("--no-header", [&presentation] { presentation.header = false; });
    parser.AddValue("--count-by", "columns with commas between them",
                    [&presentation](const auto& text) {
                        presentation.countBy = ParseColumns("--count-by", text);
                    });
    AddSum(parser, presentation);
}

/** The columns that are shown, counted, selected by or ordered by. */
std::set<Column> NamedColumns(const Options& options) {
    const Presentation& presentation = options.presentation;
    const Question& question = options.question;
    std::set<Column> named = SelectedBy(question.selection);
    if (!options.quiet) {
        const std::vector<Column> shown = presentation.countBy.empty()
                                              ? ShownColumns(presentation, question.time)
                                              : presentation.countBy;
        named.insert(shown.begin(), shown.end());
    }
    named.insert(question.sort.begin(), question.sort.end());
    named.insert(presentation.summed.begin(), presentation.summed.end());
    if (presentation.group) {
        named.insert(*presentation.group);
    }
    return named;
}

void AskWhatIsNamed(Options& options) {
    const std::set<Column> named = NamedColumns(options);
    const auto has = [&](Column column) { return named.count(column) != 0; };
    Question& question = options.question;
    AskFor(question, named);
    question.asked.service = has(Column::kService);
    question.asked.connection = has(Column::kHost) || has(Column::kUser);
    question.group = options.presentation.group;
    // Of each record a watch may tell that it has opened or closed.
    if (!options.watchSeconds && options.presentation.countBy.empty()) {
        question.most = options.presentation.limit;
    }
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
    const bool choosesColumns = !presentation.columns.empty() || !presentation.added.empty();
    const bool isTyped = presentation.schema > 1;
    Refuse(choosesColumns && !tabular && !isTyped,
           "--columns is for the formats table and csv; JSON always has every key, but for that of "
           "--schema 2");
    Refuse(presentation.jsonHeader && format != Format::kJsonl, "--header is for the format jsonl");
    Refuse(choosesColumns && counts,
           "--columns and --count-by can't be combined: the counted columns are what is shown");
    Refuse(!presentation.header && !tabular, "--no-header is for the formats table and csv");
    Refuse(counts && raw, "--count-by has the formats table, json, jsonl, csv");
    Refuse(counts && sorted, "--count-by is ordered by its counts; leave --sort out");
    Refuse(!counts && !presentation.summed.empty(), "--sum goes with --count-by");
    Refuse(presentation.group && (counts || format != Format::kTable),
           "--group-by is for tables of files");
    Refuse(presentation.wide && format != Format::kTable, "--wide is for tables");
}

void CheckWatch(const Options& options) {
    const Format format = options.presentation.format;
    Refuse(!options.presentation.countBy.empty(),
           "--watch shows files; it can't be combined with --count-by");
    Refuse(options.presentation.jsonHeader, "--watch has no --header: each event says when it was");
    Refuse(options.quiet, "--watch and --quiet can't be combined");
    Refuse(format != Format::kTable && format != Format::kJsonl,
           "--watch has the formats table (on a terminal) and jsonl");
}

}  // namespace

std::set<Column> SelectedBy(const Selection& selection) {
    std::set<Column> named;
    for (const Condition& condition : selection.conditions) {
        named.insert(condition.column);
    }
    if (selection.folders != Flagged::kYes) {
        named.insert(Column::kFolder);
    }
    return named;
}

void AskFor(Question& question, const std::set<Column>& named) {
    question.time = question.time || named.count(Column::kTime) != 0;
    question.asked.folder = named.count(Column::kFolder) != 0;
    for (const Column column : named) {
        question.asked.facts.set(static_cast<size_t>(column), IsFact(column));
    }
}

void AddSelection(Parser& parser, Selection& selection) {
    AddCondition(parser, selection, "--where", false, false);
    AddCondition(parser, selection, "--match", true, false);
    AddCondition(parser, selection, "--not-where", false, true);
    AddCondition(parser, selection, "--not-match", true, true);
    parser.AddValue("--since", "a time such as 1h", [&selection](const auto& text) {
        selection.conditions.push_back(ParseSince(text));
    });
    AddFlagged(parser, "--hidden", selection.hidden);
    AddFlagged(parser, "--folders", selection.folders);
    AddFlagged(parser, "--deleted", selection.deleted);
}

void AddListOptions(Parser& parser, Options& options) {
    AddBy(parser, options);
    AddWork(parser, options);
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
    CheckPresentation(options.presentation, !options.question.sort.empty());
    if (options.watchSeconds) {
        CheckWatch(options);
    }
    AskWhatIsNamed(options);
}

}  // namespace cli
