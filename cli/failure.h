// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_FAILURE_H
#define VORN_CLI_FAILURE_H

/**
 * @file
 * How the command ends: its exit status, and the errors that lead to kFailed.
 */

#include <stdexcept>

namespace cli {

enum ExitStatus { kFound = 0, kNothingFound = 1, kFailed = 2 };

/** Why the command ends with kFailed; the text is shown as it is. */
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** The command line can't be meant as it is; the text says why and what to write instead. */
class UsageError : public Failure {
public:
    using Failure::Failure;
};

}  // namespace cli

#endif
