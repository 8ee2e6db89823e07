// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_OUTPUT_H
#define VORN_CLI_EVENTS_EVENT_OUTPUT_H

namespace cli {

/**
 * Events on their way to a reader who may take none of them: a signal is heeded meanwhile. Behind a
 * slow one the kernel's queue runs over, and nobody else waits.
 */
class EventOutput {
public:
    EventOutput() = default;
    virtual ~EventOutput() = default;
    EventOutput(const EventOutput&) = delete;
    EventOutput& operator=(const EventOutput&) = delete;

    /** Gives all of them; false when there was a signal first, or the reader has gone for good. */
    virtual bool Flush() = 0;
    /** The same whatever signals there are, to a reader who takes some within a second. */
    virtual bool FlushLast() = 0;
};

}  // namespace cli

#endif
