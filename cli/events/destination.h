// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_DESTINATION_H
#define VORN_CLI_EVENTS_DESTINATION_H

#include <memory>

#include "cli/events/event_output.h"
#include "cli/events/event_teller.h"

namespace cli {

/** Where events go, and what makes them into what goes there. */
struct Destination {
    std::unique_ptr<EventOutput> output;
    std::unique_ptr<EventTeller> teller;
    int reader = -1; /**< a descriptor that has an error when the reader has gone; or none */
};

/** @param signals  readable when there is one; stays the caller's */
Destination ToStandardOutput(int signals);
Destination ToJournal(int signals);

}  // namespace cli

#endif
