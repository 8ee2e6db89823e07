// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_LINE_OUTPUT_H
#define VORN_CLI_EVENTS_LINE_OUTPUT_H

#include <cstddef>
#include <string>

#include "cli/events/event_output.h"

namespace cli {

/** Lines on their way to a descriptor. */
class LineOutput : public EventOutput {
public:
    /** @param signals  readable when there is one. Both descriptors stay the caller's */
    LineOutput(int fd, int signals) : fd_(fd), signals_(signals) {}

    /** Where to append to. */
    std::string& Text() { return text_; }

    bool Flush() override;
    bool FlushLast() override;

    /** The reader has gone: what was written is all that it wanted. */
    bool IsClosed() const { return closed_; }

private:
    bool IsDone() const { return text_.empty() || closed_; }
    void Write();

    int fd_;
    int signals_;
    std::string text_;
    size_t written_ = 0; /**< of the text */
    bool closed_ = false;
};

}  // namespace cli

#endif
