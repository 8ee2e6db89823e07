// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SUPPORT_RUN_PROGRAM_H
#define VORN_PLATFORM_LINUX_SUPPORT_RUN_PROGRAM_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace vornplatform {

struct ProgramLimits {
    std::chrono::milliseconds time;
    size_t output; /**< bytes on standard output */
};

enum class ProgramEnd {
    kExited,     /**< status is the exit status */
    kSignalled,  /**< status is the signal */
    kUnknown,    /**< ended, but the host program ignores SIGCHLD or collected the status itself */
    kNotStarted, /**< status is the errno value */
    kTimeLimit,
    kOutputLimit
};

struct ProgramResult {
    ProgramEnd end = ProgramEnd::kNotStarted;
    int status = 0;
    std::string output; /**< any bytes; cut at the limit */

    /** Ended by itself, with exit status 0 as far as that is known. */
    bool Succeeded() const {
        return end == ProgramEnd::kUnknown || (end == ProgramEnd::kExited && status == 0);
    }
};

/** What became of a program that failed, to stand behind its name: "takes longer than 2 s". */
std::string DescribeEnd(const ProgramResult& result, const ProgramLimits& limits);

/**
 * Runs a program to its end or to a limit and collects its standard output.
 *
 * No shell. The program gets the environment "LC_ALL=C" alone, standard input and standard error
 * on /dev/null, no other descriptor, the folder "/", default signal handling, a process group of
 * its own, and the calling thread's effective user and group as its only ones. Whatever of the
 * process group is left at the end is killed; the program itself is always waited for, by its own
 * pid. Safe in a process with threads.
 *
 * @param argv  the program's absolute path and its arguments
 * @throw HostError  when memory or descriptors are short, or what the program does can't be
 * followed any more; no program is left running then, nor of std::bad_alloc
 */
ProgramResult RunProgram(const std::vector<std::string>& argv, const ProgramLimits& limits);

}  // namespace vornplatform

#endif
