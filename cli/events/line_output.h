// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_LINE_OUTPUT_H
#define VORN_CLI_EVENTS_LINE_OUTPUT_H

#include <cstddef>
#include <string>

namespace cli {

/**
 * Text on its way to a reader who may take none of it: a signal is heeded meanwhile. Behind a slow
 * one the kernel's queue runs over, and nobody else waits.
 */
class LineOutput {
public:
    /** @param signals  readable when there is one. Both descriptors stay the caller's */
    LineOutput(int fd, int signals) : fd_(fd), signals_(signals) {}

    /** Where to append to. */
    std::string& Text() { return text_; }

    /** Writes all of it; false when there was a signal first, or the reader has gone. */
    bool Flush();
    /** The same whatever signals there are, to a reader who takes a part within a second. */
    bool FlushLast();

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
