// SPDX-License-Identifier: MIT
#ifndef VORN_BENCH_MEMORY_PLATFORM_H
#define VORN_BENCH_MEMORY_PLATFORM_H

/**
 * @file
 * A platform, and a process table, that answer from memory at next to no cost, so that a
 * benchmark measures the library alone. It defines the platform's operations and, for paths below
 * /proc, readlink, open and read.
 */

#include <string>
#include <vector>

struct MemoryPlatform {
    int processes = 0;
    int descriptors = 0; /**< of each process, all on a volume */
    std::vector<std::string> shares;
    std::vector<std::string> hidden;
    int connections = 0;     /**< of the first so many processes */
    bool hasNames = true;    /**< the unit file has a name */
    bool hasUnitFile = true; /**< access finds it */

    /** Pids count up from here. */
    static constexpr int kFirstPid = 10000;
};

/** The one that the operations answer from. */
MemoryPlatform& Platform();

#endif
