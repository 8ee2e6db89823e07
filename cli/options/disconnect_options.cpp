// SPDX-License-Identifier: MIT
#include "cli/options/disconnect_options.h"

#include "cli/failure.h"
#include "cli/options/common_options.h"
#include "cli/options/list_options.h"
#include "cli/options/values.h"

namespace cli {

void AddDisconnectOptions(Parser& parser, Options& options) {
    AddBy(parser, options);
    AddWork(parser, options);
    AddTimeout(parser, options);
    AddSelection(parser, options.question.selection);
    AddJson(parser, options);
    parser.AddFlag("--yes", options.yes);
    parser.AddFlag("--dry-run", options.dryRun);
    parser.AddValue("--grace", "a number of seconds", [&options](const auto& text) {
        options.graceSeconds = ParseSeconds("--grace", text);
    });
    parser.AddFlag("--force", options.force);
}

void CompleteDisconnectOptions(Options& options) {
    Question& question = options.question;
    const Selection& selection = question.selection;
    if (options.yes && !options.dryRun && SelectsAll(selection)) {
        throw UsageError(
            "with --yes, 'disconnect' needs a PATH or a condition; for all files name the volumes");
    }
    AskFor(question, SelectedBy(selection));
}

}  // namespace cli
