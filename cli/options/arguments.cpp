#include "cli/options/arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <functional>
#include <memory>
#include <set>

#include "cli/options/suggest.h"
#include "cli/options/values.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

constexpr double kDefaultWatchSeconds = 2;

/** One run of the parser over one command's options. */
class Parser {
public:
    explicit Parser(Command command) : app_("", "vorn-openfiles") {
        options_.command = command;
        app_.set_help_flag("");
        app_.allow_extras();
        AddFlag("-h,--help", options_.help);
        AddFlag("--version", options_.version);
        switch (command) {
            case Command::kList:
                AddListOptions();
                break;
            case Command::kMetrics:
                AddSource();
                AddValue("--output", [this](const auto& text) { options_.outputFile = text; });
                break;
            case Command::kCheck:
                AddTimeout();
                AddJsonFlag();
                break;
            case Command::kServices:
                AddJsonFlag();
                break;
        }
    }

    Options Parse(std::vector<std::string> arguments) {
        const auto mark = std::find(arguments.begin(), arguments.end(), "--");
        std::vector<std::string> operands(mark == arguments.end() ? mark : mark + 1,
                                          arguments.end());
        arguments.erase(mark, arguments.end());
        GiveWatchItsValue(arguments);
        ParseOptions(std::move(arguments));
        std::vector<std::string> paths = Operands();
        // cppcheck-suppress invalidContainer ; operands are copies
        paths.insert(paths.end(), operands.begin(), operands.end());
        TakePaths(std::move(paths));
        return std::move(options_);
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const CLI::Option* option : app_.get_options()) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
            for (const std::string& name : option->get_snames()) {
                names.push_back("-" + name);
            }
        }
        return names;
    }

private:
    using Take = std::function<void(const std::string&)>;

    void AddFlag(const std::string& names, bool& flag) {
        app_.add_flag_callback(names, [&flag] { flag = true; });
    }

    /** Texts reach take as they were written; CLI11's own conversions know lists in brackets. */
    void AddValue(const std::string& names, Take take) {
        app_.add_option(names,
                        [take = std::move(take)](const CLI::results_t& texts) {
                            std::for_each(texts.begin(), texts.end(), take);
                            return true;
                        })
            ->expected(1)
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }

    void AddJsonFlag() {
        app_.add_flag_callback("--json", [this] { TakeFormat(Format::kJson); });
    }

    void AddSource() {
        AddValue("--by", [this](const auto& text) { options_.by = ParseBy(text); });
        AddTimeout();
    }

    void AddTimeout() {
        AddValue("--timeout", [this](const auto& text) {
            options_.timeoutSeconds = ParseSeconds("--timeout", text);
        });
    }

    void AddCondition(const std::string& name, bool contains, bool negated) {
        AddValue(name, [=](const auto& text) {
            options_.selection.conditions.push_back(ParseCondition(name, text, contains, negated));
        });
    }

    void AddFlagged(const std::string& name, Flagged& wanted) {
        AddValue(name, [name, &wanted](const auto& text) { wanted = ParseFlagged(name, text); });
    }

    void AddListOptions() {
        AddSource();
        AddFlag("--time", options_.time);
        AddCondition("--where", false, false);
        AddCondition("--match", true, false);
        AddCondition("--not-where", false, true);
        AddCondition("--not-match", true, true);
        AddFlagged("--hidden", options_.selection.hidden);
        AddFlagged("--folders", options_.selection.folders);
        AddFlagged("--deleted", options_.selection.deleted);
        AddValue("--sort", [this](const auto& text) { options_.sort = ParseSortColumn(text); });
        AddFlag("--reverse", options_.reverse);
        AddValue("--limit", [this](const auto& text) { options_.limit = ParseLimit(text); });
        AddOutputOptions();
    }

    void AddOutputOptions() {
        AddValue("--format", [this](const auto& text) { TakeFormat(ParseFormat(text)); });
        AddJsonFlag();
        AddValue("--print0", [this](const auto& text) {
            options_.print0Column = ParseColumn("--print0", text);
            TakeFormat(Format::kPrint0);
        });
        app_.add_flag_callback("--pids", [this] { TakeFormat(Format::kPids); });
        AddValue("--columns",
                 [this](const auto& text) { options_.columns = ParseColumns("--columns", text); });
        app_.add_flag_callback("--no-header", [this] { options_.header = false; });
        AddValue("--count-by",
                 [this](const auto& text) { options_.countBy = ParseColumns("--count-by", text); });
        AddValue("--watch", [this](const auto& text) {
            options_.watchSeconds = ParseSeconds("--watch", text);
        });
        AddFlag("-q,--quiet", options_.quiet);
        AddFlag("--strict", options_.strict);
    }

    void TakeFormat(Format format) {
        if (hasFormat_ && format != options_.format) {
            throw UsageError("only one of --format, --json, --print0 and --pids can be given");
        }
        hasFormat_ = true;
        options_.format = format;
    }

    /** --watch takes the next argument only if that is a number: it could be a PATH as well. */
    static void GiveWatchItsValue(std::vector<std::string>& arguments) {
        for (auto at = arguments.begin(); at != arguments.end(); ++at) {
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

    void ParseOptions(std::vector<std::string> arguments) {
        std::reverse(arguments.begin(), arguments.end());
        try {
            app_.parse(std::move(arguments));
        } catch (const CLI::ParseError& error) {
            throw UsageError(Escaped(error.what(), true));
        }
    }

    /** What is neither an option nor its value. */
    std::vector<std::string> Operands() const {
        std::vector<std::string> remaining = app_.remaining();
        for (const std::string& word : remaining) {
            if (word.size() > 1 && word[0] == '-') {
                const std::string name = word.substr(0, word.find('='));
                throw UsageError(fmt::format("there is no option '{}'{}", Escaped(name, true),
                                             DidYouMean(name, Names())));
            }
        }
        return remaining;
    }

    void TakePaths(std::vector<std::string> paths) {
        if (options_.command != Command::kList && !paths.empty()) {
            throw UsageError(fmt::format("'{}' takes no PATH: '{}'",
                                         CommandNames()[static_cast<size_t>(options_.command)],
                                         Escaped(paths.front(), true)));
        }
        options_.selection.paths = std::move(paths);
    }

    CLI::App app_;
    Options options_;
    bool hasFormat_ = false;
};

bool NamesTime(const Options& options) {
    const auto has = [](const std::vector<Column>& columns) {
        return std::find(columns.begin(), columns.end(), Column::kTime) != columns.end();
    };
    const auto& conditions = options.selection.conditions;
    return has(options.columns) || has(options.countBy) ||
           (options.format == Format::kPrint0 && options.print0Column == Column::kTime) ||
           std::any_of(conditions.begin(), conditions.end(),
                       [](const Condition& each) { return each.column == Column::kTime; });
}

void Refuse(bool wrong, const char* text) {
    if (wrong) {
        throw UsageError(text);
    }
}

void CheckCombinations(const Options& options) {
    const bool tabular = options.format == Format::kTable || options.format == Format::kCsv;
    const bool raw = options.format == Format::kPrint0 || options.format == Format::kPids;
    Refuse(!options.columns.empty() && !tabular,
           "--columns is for the formats table and csv; JSON always has every key");
    Refuse(!options.columns.empty() && !options.countBy.empty(),
           "--columns and --count-by can't be combined: the counted columns are what is shown");
    Refuse(!options.header && !tabular, "--no-header is for the formats table and csv");
    Refuse(!options.countBy.empty() && raw, "--count-by has the formats table, json, jsonl, csv");
    Refuse(!options.countBy.empty() && options.sort.has_value(),
           "--count-by is ordered by its counts; leave --sort out");
    Refuse(options.watchSeconds && !options.countBy.empty(),
           "--watch shows files; it can't be combined with --count-by");
    Refuse(options.watchSeconds && options.quiet, "--watch and --quiet can't be combined");
    Refuse(options.watchSeconds && options.format != Format::kTable &&
               options.format != Format::kJsonl,
           "--watch has the formats table (on a terminal) and jsonl");
}

}  // namespace

const std::vector<std::string>& CommandNames() {
    static const std::vector<std::string> kNames = {"list", "services", "check", "metrics"};
    return kNames;
}

std::vector<std::string> OptionNames(Command command) {
    return Parser(command).Names();
}

Options ParseArguments(std::vector<std::string> arguments) {
    Command command = Command::kList;
    if (!arguments.empty()) {
        const auto& names = CommandNames();
        const auto found = std::find(names.begin(), names.end(), arguments.front());
        if (found != names.end()) {
            command = static_cast<Command>(found - names.begin());
            arguments.erase(arguments.begin());
        }
    }
    Options options = Parser(command).Parse(std::move(arguments));
    if (!options.help && !options.version) {
        CheckCombinations(options);
        options.time = options.time || NamesTime(options);
    }
    return options;
}

}  // namespace cli
