// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_WORKER_H
#define VORN_CLI_PROCESS_SUPERVISION_WORKER_H

#include <sys/types.h>

#include <functional>

#include "cli/process/supervision/gate.h"
#include "support/descriptor.h"

namespace cli {

/** A child process that does the work, and the socket to it. It doesn't outlive its owner. */
class Worker {
public:
    /** Throws Failure. */
    explicit Worker(const std::function<int(Gate&)>& work);
    /** Kills it; one that waits for a dead file system ends whenever it can. */
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    int Socket() const { return socket_.Get(); }
    void Send(int signal) const;
    /** Waits for its end: an exit status, or the negative number of the signal that ended it. */
    int Wait();

private:
    support::Descriptor socket_;
    pid_t pid_ = -1;
};

}  // namespace cli

#endif
