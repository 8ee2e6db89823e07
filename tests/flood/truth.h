// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FLOOD_TRUTH_H
#define VORN_TESTS_FLOOD_TRUTH_H

/**
 * @file
 * What the churners did, in memory that they share with the checker, and whether a list of open
 * files agrees with it.
 *
 * A slot is one descriptor's place. It is opened and closed over and over; each time is a
 * generation, counted from 1. The name of the file says slot, generation and pid, so a record
 * tells which of them it is about.
 */

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "vorn/filehandle.h"

namespace flood {

constexpr std::size_t kSlots = 1024;

/** Open only while no share covers its folder: by share its file must not be listed. */
constexpr std::size_t kUnsharedSlot = 901;

/** Each counter holds the generation that last got so far, in this order. */
struct Slot {
    std::atomic<std::uint32_t> begun;   /**< about to be opened */
    std::atomic<std::uint32_t> opened;  /**< open */
    std::atomic<std::uint32_t> closing; /**< about to be closed */
    std::atomic<std::uint32_t> closed;  /**< closed, its process ended or its volume gone */
};

/** A slot's counters at one time. */
struct Moment {
    std::uint32_t begun, opened, closing, closed;
};

/** Numbers that the churners keep for the report. */
struct Done {
    std::atomic<std::uint64_t> processes, opens, renames, deletions, mounts, folders, exports,
        sessions;
};

class Truth {
public:
    /** In memory that processes forked from now on share. */
    static Truth* Make();

    Slot& At(std::size_t slot) { return slots_[slot]; }
    std::vector<Moment> Read() const;
    Done done{};

private:
    std::array<Slot, kSlots> slots_{};
};

/** "FOLDER/s<slot>-g<generation>-p<pid>" */
std::string NameOf(const std::string& folder, std::size_t slot, std::uint32_t generation,
                   pid_t pid);

struct Verdict {
    std::uint64_t checked = 0; /**< records held against the truth */
    std::uint64_t stable = 0;  /**< of those that had to be there */
    std::vector<std::string> wrong;
};

/**
 * Whether each descriptor that was open during the whole call is in the list exactly once, under
 * its pid, and nothing is in it that was not open at some time of the call. ENUMBY is what the
 * list was made by.
 */
void Check(std::list<VORN::FileHandle::OpenedFile>& list, int enumby,
           const std::vector<Moment>& before, const std::vector<Moment>& after, Verdict& verdict);

}  // namespace flood

#endif
