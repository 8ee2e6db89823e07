// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_JOURNAL_ENTRIES_H
#define VORN_CLI_EVENTS_JOURNAL_ENTRIES_H

#include <functional>

#include "cli/events/event_teller.h"

namespace cli {

/**
 * Events as entries of systemd's journal, in the form of its native protocol: a field a line, one
 * whose value has a newline with its size before it. So values are any bytes of any length.
 */
class JournalEntries : public EventTeller {
public:
    /** @param ended  called whenever an entry is complete in the text */
    JournalEntries(const Origin& origin, std::string& out, std::function<void()> ended);

private:
    void Tell(const Event& event) override;

    std::string head_;
    std::string& out_;
    std::function<void()> ended_;
};

}  // namespace cli

#endif
