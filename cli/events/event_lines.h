// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_LINES_H
#define VORN_CLI_EVENTS_EVENT_LINES_H

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/events/process_answer.h"

namespace cli {

/** A file as an event tells of it. */
struct ToldFile {
    std::string_view volume;         /**< empty where it isn't known */
    std::optional<std::string> path; /**< nothing where its folder can't be opened any more */
    std::string_view name;           /**< empty where the kernel tells none */
    bool deleted = false;            /**< nothing has that path by now */
    pid_t pid = 0;                   /**< 0 for a process outside of this PID namespace */
    const ProcessAnswer* process = nullptr; /**< null for one that had ended */
};

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

/** Events as lines of JSON, numbered from 1 without gaps. */
class EventLines {
public:
    EventLines(const Origin& origin, std::string& out);

    void Started(Moment at, const std::vector<std::string>& volumes,
                 const std::vector<std::string>& unwatched);
    /** Of a file: opened, closed, closed-written. */
    void File(std::string_view event, Moment at, const ToldFile& file);
    /** Of none: lost, heartbeat, stopped. */
    void Plain(std::string_view event, Moment at);

private:
    void Begin(std::string_view event, Moment at);

    std::string head_;
    std::string& out_;
    std::uint64_t number_ = 0;
    std::time_t second_ = -1;
    std::string secondText_;
};

}  // namespace cli

#endif
