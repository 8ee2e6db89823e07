// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_TERMINAL_STATE_H
#define VORN_CLI_PROCESS_TERMINAL_STATE_H

#include <termios.h>

#include <optional>

namespace cli {

/**
 * The terminal while a watch is drawn on it: a screen of its own with a hidden cursor, and keys
 * that come at once and aren't shown. Everything is as before when it is destroyed.
 *
 * A "dumb" terminal gets no escape sequence, and keys are left alone where standard input is no
 * terminal or belongs to others, as it does for a program in the background.
 */
class TerminalState {
public:
    TerminalState();
    ~TerminalState();
    TerminalState(const TerminalState&) = delete;
    TerminalState& operator=(const TerminalState&) = delete;

    /** Whether keys can be read from standard input. */
    bool HasKeys() const { return keysBefore_.has_value(); }

private:
    bool screen_;
    std::optional<termios> keysBefore_;
};

}  // namespace cli

#endif
