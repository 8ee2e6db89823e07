// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_LINES_H
#define VORN_CLI_EVENTS_EVENT_LINES_H

#include <ctime>

#include "cli/events/event_teller.h"

namespace cli {

/** Events as lines of JSON. */
class EventLines : public EventTeller {
public:
    EventLines(const Origin& origin, std::string& out, int schema = 2);

    /** What a look at the list has found, for a record that the list's own writer appends. */
    struct Listed {
        std::string_view volume; /**< empty where it isn't known */
        std::uint64_t start = 0; /**< of the process; 0 where it isn't known */
        bool initial = false;
    };
    void BeginListed(std::string_view event, Moment at, const Listed& file);
    void EndListed() { out_ += "}\n"; }

private:
    void BeginFile(std::string_view volume, std::uint64_t start, bool initial);
    void Tell(const Event& event) override;
    void Begin(const Event& event);

    std::string head_;
    std::string& out_;
    std::time_t second_ = -1;
    std::string secondText_;
};

}  // namespace cli

#endif
