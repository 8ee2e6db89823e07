// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "cli/answer/counts.h"
#include "cli/answer/files.h"
#include "cli/commands/commands.h"
#include "cli/host/named_units.h"
#include "cli/host/volumes.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/snapshot.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

/** What is counted is the same whoever counts it. */
void NameServicesInEnglish(Snapshot& snapshot) {
    const auto names = EnglishServiceNames();
    if (names.empty()) {
        return;
    }
    for (RecordTexts& texts : snapshot.texts) {
        for (ProcessTexts& process : texts.Processes()) {
            const auto name = names.find(process.service);
            if (name != names.end()) {
                process.service = name->second;
            }
        }
    }
}

void Show(Snapshot& snapshot, const Options& options) {
    Output output(STDOUT_FILENO);
    const Terminal terminal = DescribeTerminal(STDOUT_FILENO);
    if (options.presentation.countBy.empty()) {
        WriteFiles(snapshot, options.question, options.presentation, terminal, output);
    } else {
        if (options.question.asked.service) {
            NameServicesInEnglish(snapshot);
        }
        WriteCounts(snapshot, options.question, options.presentation, terminal, output);
    }
    output.Flush();
}

/** What keeps the answer from being the whole truth. */
void ComplainOf(const Snapshot& snapshot) {
    if (!snapshot.doubt.empty()) {
        Complain(snapshot.doubt);
    }
    if (!snapshot.incompleteReason.empty()) {
        Complain("incomplete: " + Escaped(snapshot.incompleteReason, true));
    }
}

int List(const Options& options, Gate& gate) {
    // Left to the end of the process: to give back a million records takes as long as to sort them.
    static Snapshot& snapshot = *new Snapshot(TakeSnapshot(options.question, gate));
    if (!options.quiet) {
        Show(snapshot, options);
    }
    if (!snapshot.notice.empty() && !options.quiet) {
        Complain(snapshot.notice);
    }
    const bool isWhole = snapshot.incompleteReason.empty() && snapshot.doubt.empty();
    if (!isWhole && (options.strict || !options.quiet)) {
        ComplainOf(snapshot);
    }
    if (!isWhole && options.strict) {
        return kFailed;
    }
    return snapshot.files.empty() ? kNothingFound : kFound;
}

}  // namespace

int ListCommand(const Options& options, Gate& gate) {
    try {
        return options.watchSeconds ? WatchCommand(options, gate) : List(options, gate);
    } catch (const PathElsewhere& failure) {
        throw Failure(failure.what() + options.commandHint);
    }
}

}  // namespace cli
