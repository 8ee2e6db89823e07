// SPDX-License-Identifier: MIT
#include "cli/options/arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "cli/failure.h"
#include "cli/options/busy_options.h"
#include "cli/options/common_options.h"
#include "cli/options/disconnect_options.h"
#include "cli/options/list_options.h"
#include "cli/options/parser.h"
#include "cli/options/report_options.h"
#include "cli/text/escape.h"
#include "cli/text/suggest.h"

namespace cli {
namespace {

constexpr const char* kHelp = "help";

void AddOptions(Parser& parser, Options& options) {
    AddCommonOptions(parser, options);
    switch (options.command) {
        case Command::kList:
            return AddListOptions(parser, options);
        case Command::kServices:
            return AddServicesOptions(parser, options);
        case Command::kCheck:
            return AddCheckOptions(parser, options);
        case Command::kMetrics:
            return AddMetricsOptions(parser, options);
        case Command::kBusy:
        case Command::kIdle:
            return AddBusyOptions(parser, options);
        case Command::kDisconnect:
            return AddDisconnectOptions(parser, options);
        case Command::kEvents:
            return AddEventsOptions(parser, options);
    }
}

const std::string& NameOf(Command command) {
    return CommandNames()[static_cast<size_t>(command)];
}

std::optional<Command> CommandNamed(const std::string& name) {
    const auto& names = CommandNames();
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end()
               ? std::nullopt
               : std::optional<Command>(static_cast<Command>(found - names.begin()));
}

/** For a word that is none of the commands. */
std::string CommandHint(const std::string& word) {
    std::vector<std::string> names = CommandNames();
    names.emplace_back(kHelp);
    return DidYouMean(word, names);
}

/** What "help" and the words behind it ask for. */
Options AskHelp(const std::vector<std::string>& words) {
    Options options;
    options.help = true;
    if (words.size() > 1) {
        throw UsageError("'help' takes one command");
    }
    if (!words.empty()) {
        const auto command = CommandNamed(words.front());
        if (!command) {
            throw UsageError(fmt::format("there is no command '{}'{}", Escaped(words.front(), true),
                                         CommandHint(words.front())));
        }
        options.command = *command;
    }
    return options;
}

bool TakesPaths(Command command) {
    return command == Command::kList || command == Command::kBusy || command == Command::kIdle ||
           command == Command::kDisconnect || command == Command::kEvents;
}

void TakePaths(Options& options, std::vector<std::string> paths) {
    if (!TakesPaths(options.command) && !paths.empty()) {
        throw UsageError(fmt::format("'{}' takes no PATH: '{}'", NameOf(options.command),
                                     Escaped(paths.front(), true)));
    }
    options.question.selection.paths = std::move(paths);
}

Options ParseCommand(Command command, std::vector<std::string> arguments) {
    Options options;
    options.command = command;
    if (command == Command::kList) {
        GiveWatchItsValue(arguments);
    }
    GiveWaitItsValue(arguments);
    Parser parser;
    AddOptions(parser, options);
    TakePaths(options, parser.Parse(std::move(arguments)));
    CheckSchema(options);
    if (command == Command::kMetrics) {
        CompleteMetricsOptions(options);
    }
    if (command == Command::kList && !options.help && !options.version) {
        CompleteListOptions(options);
    }
    if (command == Command::kDisconnect && !options.help && !options.version) {
        CompleteDisconnectOptions(options);
    }
    return options;
}

}  // namespace

const std::vector<std::string>& CommandNames() {
    static const std::vector<std::string> kNames = {"list", "services", "check",      "metrics",
                                                    "busy", "idle",     "disconnect", "events"};
    return kNames;
}

std::vector<std::string> OptionNames(Command command) {
    Options options;
    options.command = command;
    Parser parser;
    AddOptions(parser, options);
    return parser.Names();
}

Options ParseArguments(std::vector<std::string> arguments) {
    if (arguments.empty()) {
        return ParseCommand(Command::kList, {});
    }
    const std::string first = arguments.front();
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (first == kHelp) {
        return AskHelp(rest);
    }
    if (const auto command = CommandNamed(first)) {
        return ParseCommand(*command, rest);
    }
    Options options = ParseCommand(Command::kList, std::move(arguments));
    if (first.find_first_of("/-") == std::string::npos) {
        options.commandHint = CommandHint(first);
    }
    return options;
}

}  // namespace cli
