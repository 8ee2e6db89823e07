// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_SOURCE_H
#define VORN_CLI_QUESTION_HOLDERS_SOURCE_H

/**
 * @file
 * Where reasons of being in use are found: a source a kind, all behind one interface.
 */

#include <optional>
#include <string>
#include <vector>

#include "cli/question/holders/holder.h"
#include "cli/question/holders/targets.h"

namespace cli {

/** How much is wanted: what isn't costs nothing. */
enum class Wanted {
    kWhether,   /**< one row is enough */
    kPids,      /**< one row a process is enough */
    kFirstName, /**< all rows, with the name of one file each */
    kNames      /**< all rows with the names of all files */
};

class Source {
public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /**
     * Adds a row for each reason that it knows of, and a sentence to the lost ones for whatever
     * kept it from knowing. That the host has no such thing is no loss.
     */
    virtual void Find(const Targets& targets, Wanted wanted, Holders& holders) = 0;
};

/** Adds what one source has found to what others have. */
void Append(Holders& all, Holders more);

/** For a source that knows its things by name: the place of what a path leads to. */
struct Named {
    Place place;
    std::string path; /**< as it is to be shown */
    Identity identity;
    bool deleted = false; /**< what is meant has no name any more */
};

/** @return nothing where the path leads nowhere, with errno */
std::optional<Named> PlaceOfPath(const Targets& targets, const std::string& path);

/** "can't read /proc/swaps: Permission denied", from errno. */
std::string CannotRead(const std::string& path);

/** A file of the kernel's; nothing, with errno, where it can't be read to its end. */
std::optional<std::string> ReadKernelFile(const std::string& path);

}  // namespace cli

#endif
