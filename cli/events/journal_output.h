// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_JOURNAL_OUTPUT_H
#define VORN_CLI_EVENTS_JOURNAL_OUTPUT_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/events/event_output.h"
#include "support/descriptor.h"

namespace cli {

/**
 * Entries on their way to journald, each a datagram of its native protocol. sd_journal_sendv()
 * isn't for this: it waits for a journald that has stopped, whatever signals there are, and where
 * there is none it takes entries as sent.
 *
 * While journald takes none they are kept and offered again. Standard error has one line when that
 * begins and another when it is over.
 */
class JournalOutput : public EventOutput {
public:
    /** @param signals  readable when there is one; stays the caller's */
    explicit JournalOutput(int signals, std::string socket = "/run/systemd/journal/socket")
        : signals_(signals), path_(std::move(socket)) {}

    /** Where to append an entry to, and what to call when it is complete. */
    std::string& Text() { return text_; }
    void EndEntry() { ends_.push_back(text_.size()); }

    bool Flush() override;
    bool FlushLast() override;

private:
    using Clock = std::chrono::steady_clock;

    bool IsDone() const { return sent_ == ends_.size(); }
    int Send();
    int SendSome();
    int SendAsFile(std::string_view entry) const;
    int Connect();
    std::string_view Entry(size_t number) const;
    bool Wait(int error, int signals, std::chrono::milliseconds patience);
    void TellTrouble(int error);
    void TellEnd();

    int signals_;
    std::string path_;
    support::Descriptor socket_;
    std::string text_;
    std::vector<size_t> ends_; /**< of entries in the text */
    size_t sent_ = 0;          /**< entries */
    std::optional<Clock::time_point> refusedSince_;
    bool told_ = false;
};

}  // namespace cli

#endif
