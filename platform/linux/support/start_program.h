// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SUPPORT_START_PROGRAM_H
#define VORN_PLATFORM_LINUX_SUPPORT_START_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/descriptor.h"

namespace vornplatform {

/** A program that runs, or has ended and waits to be collected. */
struct StartedProgram {
    pid_t pid = -1;
    support::Descriptor end; /**< readable once it has ended; none where the kernel has no such */
};

/**
 * Starts a program as RunProgram describes. It runs under the calling thread's effective user and
 * group alone: they become its real and saved ones too, whatever those of the host program are.
 *
 * @param argv    the program's absolute path and its arguments
 * @param output  what becomes its standard output; above 2
 * @return what is to be waited for by its pid
 * @throw HostError  why it can't be started
 */
StartedProgram StartProgram(const std::vector<std::string>& argv, int output);

}  // namespace vornplatform

#endif
