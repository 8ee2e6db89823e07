// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_H
#define VORN_CLI_EVENTS_EVENT_H

/**
 * @file
 * What is told of, whatever it is made into.
 */

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/events/process_answer.h"

namespace cli {

/** Microseconds since 1970. */
using Moment = std::int64_t;
Moment MomentNow();

/** Where events come from. */
struct Origin {
    std::string node;
    std::string machine; /**< /etc/machine-id; empty without one */
    std::string run;     /**< another one for each run of the command */
};
/** Of this host and a new run. */
Origin NewOrigin();

/** Which volumes are told of, and how. */
struct Coverage {
    std::vector<std::string> watched;   /**< by the kernel, as it happens */
    std::vector<std::string> lookedAt;  /**< every few seconds */
    std::vector<std::string> unwatched; /**< not at all */
};

/** A file as an event tells of it. */
struct ToldFile {
    std::string_view volume;         /**< empty where it isn't known */
    std::optional<std::string> path; /**< nothing where its folder can't be opened any more */
    std::string_view name;           /**< empty where the kernel tells none */
    bool deleted = false;            /**< nothing has that path by now */
    pid_t pid = 0;                   /**< 0 for a process outside of this PID namespace */
    const ProcessAnswer* process = nullptr; /**< null for one that had ended */
    bool initial = false;                   /**< it was open before anybody looked */

    /** What is known of the process: nothing of one that had ended. */
    const ProcessAnswer& Process() const;
};

/** One of them. What isn't of its kind is null. */
struct Event {
    std::uint64_t number = 0;
    Moment at = 0;
    std::string_view name;
    const Coverage* coverage = nullptr;                /**< of "started" */
    const ToldFile* file = nullptr;                    /**< of opens and closes */
    const std::vector<std::string>* reasons = nullptr; /**< of "incomplete" */
};

}  // namespace cli

#endif
