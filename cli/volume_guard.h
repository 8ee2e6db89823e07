#ifndef VORN_CLI_VOLUME_GUARD_H
#define VORN_CLI_VOLUME_GUARD_H

/**
 * @file
 * Keeps an object that is named just "/volume" from ending the enumeration.
 *
 * The library throws at such a target of a descriptor, and anyone who may make a user namespace
 * can hold one: a folder of that name in a file system of their own. The command therefore stands
 * before the platform's KLIBCFileEnumDir. Only while a guard lives, which is after the library
 * has thrown, such descriptors are left out of what it lists of /proc/<pid>/fd/.
 */

#include <string>
#include <vector>

namespace cli {

/** One at a time. */
class VolumeGuard {
public:
    VolumeGuard();
    ~VolumeGuard();
    VolumeGuard(const VolumeGuard&) = delete;
    VolumeGuard& operator=(const VolumeGuard&) = delete;

    /** Pids of the processes that had such a descriptor left out, each once. */
    const std::vector<std::string>& Pids() const { return pids_; }

    /** Whether a descriptor is to be left out; notes its process. */
    bool LeavesOut(const std::string& folder, const char* descriptor);

private:
    std::vector<std::string> pids_;
};

}  // namespace cli

#endif
