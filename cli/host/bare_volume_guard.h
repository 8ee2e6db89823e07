// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_BARE_VOLUME_GUARD_H
#define VORN_CLI_HOST_BARE_VOLUME_GUARD_H

/**
 * @file
 * Keeps an object that is named just "/volume" from ending the enumeration.
 *
 * The library throws at such a target of a descriptor, and anyone who may make a user namespace
 * can hold one: a folder of that name in a file system of their own. The command therefore stands
 * before the C library's readlink. While a guard lives, a link /proc/<pid>/fd/<n> whose target is
 * "/volume" reads like one that was closed meanwhile. It is the library's own read that is judged,
 * so nobody can be quicker.
 */

#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace cli {

/** What the user should know of processes that hold "/volume" itself open; empty for none. */
std::string BareVolumeNotice(const std::set<int>& pids);

/**
 * One at a time. It is made before the threads whose reading it guards, and outlives them.
 */
class BareVolumeGuard {
public:
    BareVolumeGuard();
    ~BareVolumeGuard();
    BareVolumeGuard(const BareVolumeGuard&) = delete;
    BareVolumeGuard& operator=(const BareVolumeGuard&) = delete;

    /** What the user should know; empty when nothing was kept from the library. */
    std::string Notice() const { return BareVolumeNotice(pids_); }

    /** Whether a link that was read is to be kept from its reader; notes its process. */
    bool KeepsBack(std::string_view link, std::string_view target);

private:
    std::mutex mutex_; /**< of the set, while threads read */
    std::set<int> pids_;
};

}  // namespace cli

#endif
