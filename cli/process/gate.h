#ifndef VORN_CLI_PROCESS_GATE_H
#define VORN_CLI_PROCESS_GATE_H

/**
 * @file
 * Work that may never come back, done by a process that can be given up.
 */

#include <functional>

namespace cli {

/**
 * Marks the part of the work that the time limit is about.
 *
 * A worker that waits for a dead file system can't always be killed, and whoever reads its output
 * would wait for it to end. So inside the gate it holds none of its output: it gets standard
 * output and standard error from its parent, over a socket, each time that it leaves the gate.
 */
class Gate {
public:
    /** Without a time limit the gate does nothing. */
    Gate() = default;
    explicit Gate(int socket) : socket_(socket) {}

    class Inside {
    public:
        explicit Inside(Gate& gate) : gate_(gate) { gate_.Enter(); }
        ~Inside() { gate_.Leave(); }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

    private:
        Gate& gate_;
    };

private:
    void Enter();
    void Leave();

    int socket_ = -1;
};

/**
 * Runs work in a child and returns its exit status. When the child stays inside the gate for
 * longer than the limit it is killed, the volumes that don't answer either are named on standard
 * error, and the result is kFailed.
 */
int RunWithTimeout(double seconds, const std::function<int(Gate&)>& work);

}  // namespace cli

#endif
