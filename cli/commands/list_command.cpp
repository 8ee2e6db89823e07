#include <unistd.h>

#include "cli/answer/counts.h"
#include "cli/answer/files.h"
#include "cli/commands/commands.h"
#include "cli/host/volumes.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/snapshot.h"

namespace cli {
namespace {

void Show(Snapshot& snapshot, const Options& options) {
    Output output(STDOUT_FILENO);
    const Terminal terminal = DescribeTerminal(STDOUT_FILENO);
    if (options.presentation.countBy.empty()) {
        WriteFiles(snapshot, options.question, options.presentation, terminal, output);
    } else {
        WriteCounts(snapshot, options.question, options.presentation, terminal, output);
    }
    output.Flush();
}

int List(const Options& options, Gate& gate) {
    Snapshot snapshot = TakeSnapshot(options.question, gate);
    if (!options.quiet) {
        Show(snapshot, options);
    }
    if (!snapshot.notice.empty() && !options.quiet) {
        Complain(snapshot.notice);
    }
    if (!snapshot.incompleteReason.empty() && (options.strict || !options.quiet)) {
        Complain("incomplete: " + snapshot.incompleteReason);
    }
    if (options.strict && !snapshot.incompleteReason.empty()) {
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
