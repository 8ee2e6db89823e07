// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <chrono>

#include "cli/answer/metrics.h"
#include "cli/commands/commands.h"
#include "cli/host/named_units.h"
#include "cli/process/output.h"
#include "cli/process/output_file.h"

namespace cli {

int MetricsCommand(const Options& options, Gate& gate) {
    using Clock = std::chrono::steady_clock;
    // Series must not change with whoever starts the command.
    const InEnglish english;
    const auto begin = Clock::now();
    Snapshot snapshot = TakeSnapshot(options.question, gate);
    const std::chrono::duration<double> taken = Clock::now() - begin;
    const std::string text =
        MetricsText(snapshot, options.question, options.presentation.summed, taken.count());
    if (!snapshot.notice.empty()) {
        Complain(snapshot.notice);
    }
    if (options.outputFile.empty() || options.outputFile == "-") {
        Output output(STDOUT_FILENO);
        output.Text() = text;
        output.Flush();
    } else {
        WriteOutputFile(options.outputFile, text);
    }
    return kFound;
}

}  // namespace cli
