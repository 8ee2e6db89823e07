// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_TELLER_H
#define VORN_CLI_EVENTS_EVENT_TELLER_H

#include "cli/events/event.h"

namespace cli {

/** Numbers events from 1 without gaps. What they are made into, others say. */
class EventTeller {
public:
    EventTeller() = default;
    virtual ~EventTeller() = default;
    EventTeller(const EventTeller&) = delete;
    EventTeller& operator=(const EventTeller&) = delete;

    void Started(Moment at, const Coverage& coverage);
    /** Of a file: opened, closed, closed-written. */
    void File(std::string_view event, Moment at, const ToldFile& file);
    /** A look that may lack files, and why. */
    void Incomplete(Moment at, const std::vector<std::string>& reasons);
    /** Of none: lost, heartbeat, stopped. */
    void Plain(std::string_view event, Moment at);

protected:
    /** The next one, of which nothing more is known yet. */
    Event Next(std::string_view name, Moment at) { return {++number_, at, name}; }

private:
    virtual void Tell(const Event& event) = 0;

    std::uint64_t number_ = 0;
};

}  // namespace cli

#endif
