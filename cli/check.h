#ifndef VORN_CLI_CHECK_H
#define VORN_CLI_CHECK_H

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

/** Whether `/proc/<pid>/cgroup` has a line for the hierarchy name=systemd. */
bool HasSystemdHierarchy(std::string_view cgroup);

std::vector<Finding> ExamineHost();

/** @name The parts of ExamineHost that ask for more than one fact. @{ */
Finding ExamineShares();
Finding ExamineUnits();
Finding ExamineTexts();
/** Sockets, SSH sessions, SMB sessions. */
std::vector<Finding> ExamineConnections();
/** @} */

}  // namespace cli

#endif
