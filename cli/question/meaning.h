// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_MEANING_H
#define VORN_CLI_QUESTION_MEANING_H

#include <string>
#include <vector>

#include "cli/question/question.h"

namespace cli {

/** A question in the names of this host, and what the user should know of that. */
struct Meaning {
    Question question;  /**< PATHs without links, services by the names that they are shown by */
    std::string notice; /**< how it is answered otherwise than it was asked; mostly empty */
    std::string doubt;  /**< why it may not be what was meant; mostly empty */
};

/** The data volumes. Throws Failure where there are none, or nothing tells them. */
std::vector<std::string> VolumesToAsk();

/**
 * Asks the host for volumes and, by share, for shares.
 *
 * @throws Failure when there is no volume or a PATH is on none
 */
Meaning Understand(const Question& question);

/** Two notices as one; either may be empty. */
std::string Joined(const std::string& a, const std::string& b);

}  // namespace cli

#endif
