// SPDX-License-Identifier: MIT
// What /proc says of descriptors, locks and units: fdinfo, locks and cgroup.

#include "cli/host/facts/facts_text.h"
#include "cli/host/facts/lock_table.h"
#include "fuzz/text_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = TextOf(data, size);
    if (const auto state = cli::ParseOpenState(text)) {
        Must(state->writes || !state->appends);
        // The locks of one descriptor are a table as well; at the moment 0 no process had started.
        const cli::LockTable table(text, 0);
        for (const cli::KernelLock& lock : state->locks) {
            Must(table.WaitersFor(lock).empty());
        }
    }
    const std::string unit = cli::UnitOf(text);
    Must(unit.find_first_of("/\n") == std::string::npos);
    return 0;
}
