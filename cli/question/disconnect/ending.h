// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_DISCONNECT_ENDING_H
#define VORN_CLI_QUESTION_DISCONNECT_ENDING_H

/**
 * @file
 * The end of connections that somebody has agreed to.
 */

#include <optional>
#include <vector>

#include "cli/host/pid_descriptor.h"
#include "cli/question/disconnect/plan.h"

namespace cli {

/** What has become of a connection. */
struct Outcome {
    enum State {
        kLeft,   /**< it was gone, or held nothing selected any more, before anything was sent */
        kEnded,  /**< all of its processes */
        kRemains /**< some of them */
    };
    State state = kLeft;
    std::vector<pid_t> remaining;
    int error = 0; /**< errno value of a signal that couldn't be sent */
};

/**
 * Holds the processes of connections by descriptors from before the question whether they are to
 * end. A process is signalled only if a look that was taken later still finds it in the same
 * connection, and it has lived until then: so the look told of no other process with its id.
 */
class Ending {
public:
    /** Takes hold of the processes. */
    explicit Ending(const std::vector<PlannedConnection>& agreed);

    /**
     * Confirms the processes by a later look, and takes hold of those that the same connections
     * have started meanwhile.
     *
     * @return whether there were such: only another look can confirm them
     */
    bool Confirm(const Plan& now);

    /** Sends a signal to the confirmed processes that live; tells how many there were. */
    size_t Send(int signal);
    /** Sends it to those of one of the connections. */
    size_t Send(int signal, size_t connection);
    /** Waits until all that were signalled have ended, for so long at most. */
    void Wait(double seconds) const;

    /** One a connection, in the order in which they were agreed to. */
    std::vector<Outcome> Outcomes() const;
    /** The confirmed processes of a connection that live. */
    std::vector<pid_t> Confirmed(size_t connection) const;

private:
    struct Target {
        size_t connection;
        pid_t pid;
        PidDescriptor process;
        bool confirmed = false;
        bool signalled = false;
        int error = 0;
    };

    void SendTo(Target& target, int signal);
    bool Holds(size_t connection, pid_t pid) const;

    const std::vector<PlannedConnection> agreed_;
    std::vector<Target> targets_;
};

}  // namespace cli

#endif
