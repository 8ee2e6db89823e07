// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_PID_DESCRIPTOR_H
#define VORN_CLI_HOST_PID_DESCRIPTOR_H

#include <sys/types.h>

#include <utility>

#include "support/descriptor.h"

namespace cli {

/**
 * One process: whoever gets its id after it has ended is another one, and is neither asked nor
 * signalled by this.
 */
class PidDescriptor {
public:
    PidDescriptor() = default;
    /** False for a process that has gone. Throws Failure where the kernel gives none. */
    explicit PidDescriptor(pid_t pid);
    /** One that the kernel has given for a process. */
    explicit PidDescriptor(support::Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    explicit operator bool() const { return static_cast<bool>(descriptor_); }
    int Get() const { return descriptor_.Get(); }
    /** Whether the process has ended, be its parent told of it or not. */
    bool HasEnded() const;
    /** @return 0, or an errno value: ESRCH where it has ended */
    int Send(int signal) const;
    /** A descriptor of its own for what the process has as number; without one errno says why. */
    support::Descriptor Copy(int number) const;

private:
    support::Descriptor descriptor_;
};

}  // namespace cli

#endif
