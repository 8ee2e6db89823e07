#ifndef VORN_CLI_HOST_HOST_CHECK_H
#define VORN_CLI_HOST_HOST_CHECK_H

/**
 * @file
 * Whether this host can answer in full.
 */

#include <string>
#include <string_view>
#include <vector>

namespace cli {

enum class State { kOk, kWarning, kMissing };

struct Finding {
    std::string subject; /**< such as "rights" */
    State state;
    std::string text;   /**< what was found */
    std::string advice; /**< what to do; empty when all is well */
};

/** "ok", "warning" or "missing". */
std::string_view StateName(State state);

std::vector<Finding> ExamineHost();

}  // namespace cli

#endif
