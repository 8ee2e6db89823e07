// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_GATE_H
#define VORN_CLI_PROCESS_SUPERVISION_GATE_H

/**
 * @file
 * The worker's side of work that may never come back: a supervisor can give it up.
 */

namespace cli {

/**
 * Marks the part of the work in which a volume may keep the worker waiting for good.
 *
 * A worker that waits for a dead file system can't always be killed, and whoever reads its output
 * or wants its terminal back would wait for it to end. So inside the gate it has none of its
 * standard descriptors: it gets them from its supervisor, over a socket, each time that it leaves
 * the gate.
 *
 * Without a supervisor the gate does nothing.
 */
class Gate {
public:
    Gate() = default;
    explicit Gate(int socket) : socket_(socket) {}

    class Inside {
    public:
        /** Throws Failure. */
        explicit Inside(Gate& gate) : gate_(gate) { gate_.Enter(); }
        ~Inside() { gate_.Leave(); }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

    private:
        Gate& gate_;
    };

    /** While it lives the supervisor keeps the terminal ready for drawing. */
    class Screen {
    public:
        explicit Screen(Gate& gate);
        ~Screen();
        Screen(const Screen&) = delete;
        Screen& operator=(const Screen&) = delete;

    private:
        Gate& gate_;
    };

    /** Whether this process works for another of the same program, its parent. */
    bool HasSupervisor() const { return socket_ >= 0; }

    /** Tells the supervisor, who may have to end the work by itself, what its exit status is. */
    void TellFound();

private:
    void Enter();
    void Leave();
    void Say(char byte) const;

    int socket_ = -1;
    bool toldFound_ = false;
};

}  // namespace cli

#endif
