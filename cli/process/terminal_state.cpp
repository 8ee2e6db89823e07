// SPDX-License-Identifier: MIT
#include "cli/process/terminal_state.h"

#include <unistd.h>

#include "cli/process/terminal.h"
#include "support/write_all.h"

namespace cli {
namespace {

constexpr char kOwnScreen[] = "\x1B[?1049h\x1B[?25l";
constexpr char kScreenBefore[] = "\x1B[?25h\x1B[?1049l";

/** The settings of the keys, where they are ours to change. */
std::optional<termios> OwnKeys() {
    termios keys{};
    const bool own = tcgetattr(STDIN_FILENO, &keys) == 0 && tcgetpgrp(STDIN_FILENO) == getpgrp();
    return own ? std::optional<termios>(keys) : std::nullopt;
}

}  // namespace

// What can't be written has no terminal behind it any more: there is nothing to set or restore.

TerminalState::TerminalState()
    : screen_(DescribeTerminal(STDOUT_FILENO).addressable), keysBefore_(OwnKeys()) {
    if (screen_) {
        support::WriteAll(STDOUT_FILENO, kOwnScreen);
    }
    if (keysBefore_) {
        termios keys = *keysBefore_;
        keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        tcsetattr(STDIN_FILENO, TCSADRAIN, &keys);
    }
}

TerminalState::~TerminalState() {
    if (keysBefore_) {
        tcsetattr(STDIN_FILENO, TCSADRAIN, &*keysBefore_);
    }
    if (screen_) {
        support::WriteAll(STDOUT_FILENO, kScreenBefore);
    }
}

}  // namespace cli
