// SPDX-License-Identifier: MIT
#include "cli/events/destination.h"

#include <unistd.h>

#include "cli/events/event_lines.h"
#include "cli/events/journal_entries.h"
#include "cli/events/journal_output.h"
#include "cli/events/line_output.h"

namespace cli {

Destination ToStandardOutput(int signals) {
    auto output = std::make_unique<LineOutput>(STDOUT_FILENO, signals);
    auto teller = std::make_unique<EventLines>(NewOrigin(), output->Text());
    return {std::move(output), std::move(teller), STDOUT_FILENO};
}

Destination ToJournal(int signals) {
    auto output = std::make_unique<JournalOutput>(signals);
    auto teller = std::make_unique<JournalEntries>(NewOrigin(), output->Text(),
                                                   [&to = *output] { to.EndEntry(); });
    return {std::move(output), std::move(teller), -1};
}

}  // namespace cli
