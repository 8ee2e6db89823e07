// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SOURCES_RECORD_SOURCE_H
#define VORN_CLI_QUESTION_SOURCES_RECORD_SOURCE_H

#include <string>

#include "cli/question/record.h"

namespace cli {

/**
 * Where the records of one enumeration come from: every descriptor but 0 of every process that
 * /proc shows, whose target PathBeginWithVolume takes. The bare "/volume" is left out.
 *
 * A record has its pid, as /proc names the process, and its full path, as readlink gives the
 * target to this process; nothing else but, where TellsFolders(), the flag of a folder. Duplicates
 * stay in.
 */
class RecordSource {
public:
    RecordSource() = default;
    virtual ~RecordSource() = default;
    RecordSource(const RecordSource&) = delete;
    RecordSource& operator=(const RecordSource&) = delete;

    /**
     * Appends the records of the next portion of processes, and what they point into.
     *
     * - Several threads may call at the same time, each with records and texts of its own.
     * - A process is never split: one call appends all of its records, in the order of its
     *   descriptors. The order of processes does not matter.
     * - A portion is small, some milliseconds' work at most where processes allow it, so that
     *   threads that take one after the other end together.
     * - Once a call, on any thread, has returned 0 or less or has thrown, later calls return 0.
     *
     * @return 1 when a portion was taken, which may have had no record; 0 when none is left;
     *         negative, with this thread's platform error code and the log lines of
     *         GetProcOpenedFileInVolume, when processes can't be listed
     * @throws std::bad_alloc and what else that function lets through
     */
    virtual int Next(Files& records, RecordTexts& texts) = 0;

    /**
     * Whether records of folders have their flag already, so that their paths need not be looked at
     * any more. It is that of the object held, which a path may no longer name.
     */
    virtual bool TellsFolders() const { return false; }

    /**
     * What the user should know of what was left out; mostly empty. To be asked when all threads
     * have finished.
     */
    virtual std::string Notice() const = 0;
};

}  // namespace cli

#endif
