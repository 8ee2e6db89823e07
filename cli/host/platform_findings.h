// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_PLATFORM_FINDINGS_H
#define VORN_CLI_HOST_PLATFORM_FINDINGS_H

/**
 * @file
 * What the platform says of itself: the one judgement of completeness, for lists, metrics and
 * "check" alike.
 */

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

enum class State { kOk, kWarning, kMissing };

/** Texts are bytes, as the host names things: to be escaped where people read them. */
struct Finding {
    std::string subject; /**< such as "shares" */
    State state;
    std::string text;          /**< what was found */
    std::string advice;        /**< what to do; empty where there is nothing to do */
    bool costsAnswers = false; /**< lists of open files lack something by it */
};

/** What the platform finds of the whole host; nothing where it can't tell. Throws Failure. */
std::optional<std::vector<Finding>> HostFindings();

/**
 * Why lists that were taken by now lack something; empty when they are complete. A platform that
 * can't tell is judged by the rights of this process.
 */
std::vector<std::string> IncompleteReasons();
/** The same as one text. */
std::string IncompleteReason();

/** The same of one subject alone, such as "volumes". */
std::string IncompleteReason(std::string_view subject);

}  // namespace cli

#endif
