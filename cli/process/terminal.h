// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_TERMINAL_H
#define VORN_CLI_PROCESS_TERMINAL_H

/**
 * @file
 * What the reader of a file descriptor can be shown.
 */

#include <cstddef>
#include <limits>

namespace cli {

struct Terminal {
    static constexpr size_t kUnlimited = std::numeric_limits<size_t>::max();

    bool isTerminal = false;
    size_t width = kUnlimited;  /**< columns */
    size_t height = kUnlimited; /**< lines */
    bool addressable = false;   /**< understands escape sequences */
    bool colour = false;
    bool utf8 = false;
};

/**
 * Asks the terminal behind fd for its size (TIOCGWINSZ; COLUMNS and LINES where it doesn't know,
 * 80 by 24 failing that). Escape sequences
 * need a terminal other than a "dumb" one, colour also no NO_COLOR; UTF-8
 * is what the locale of the environment says, also where that locale isn't installed.
 */
Terminal DescribeTerminal(int fd);

}  // namespace cli

#endif
