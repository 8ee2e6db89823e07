#include <unistd.h>

#include "cli/answer/counts.h"
#include "cli/answer/render.h"
#include "cli/commands/commands.h"
#include "cli/process/output.h"
#include "cli/question/snapshot.h"

namespace cli {

int ListCommand(const Options& options, Gate& gate) {
    if (options.watchSeconds) {
        return WatchCommand(options, gate);
    }
    Snapshot snapshot = TakeSnapshot(options, gate);
    if (!options.quiet) {
        Output output(STDOUT_FILENO);
        const Terminal terminal = DescribeTerminal(STDOUT_FILENO);
        if (options.countBy.empty()) {
            RenderFiles(snapshot, options, terminal, output);
        } else {
            RenderCounts(snapshot, options, terminal, output);
        }
        output.Flush();
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

}  // namespace cli
