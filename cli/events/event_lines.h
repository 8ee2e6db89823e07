// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_LINES_H
#define VORN_CLI_EVENTS_EVENT_LINES_H

#include <ctime>

#include "cli/events/event_teller.h"

namespace cli {

/** Events as lines of JSON. */
class EventLines : public EventTeller {
public:
    EventLines(const Origin& origin, std::string& out);

private:
    void Tell(const Event& event) override;
    void Begin(const Event& event);

    std::string head_;
    std::string& out_;
    std::time_t second_ = -1;
    std::string secondText_;
};

}  // namespace cli

#endif
