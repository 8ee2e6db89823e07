// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_PLATFORM_ANSWERS_H
#define VORN_CLI_HOST_PLATFORM_ANSWERS_H

/**
 * @file
 * Answers of the platform that one thread gets and others are given.
 *
 * Steps of the library that several threads take, each on a list of its own, would ask for shares,
 * volumes and hidden directories once a thread, log once a thread, and might be told different
 * things. The command therefore stands before these operations.
 */

#include <string>
#include <unordered_map>
#include <vector>

#include "vorn/platform/share.h"
#include "vorn/platform/string_list.h"
#include "vorn/platform/volume.h"

namespace cli {

/** Noted by one thread at a time; then given to any number of them. */
class PlatformAnswers {
public:
    /** While it lives this thread's questions go to the platform, and its answers are noted. */
    class Noting {
    public:
        explicit Noting(PlatformAnswers& answers);
        ~Noting();
        Noting(const Noting&) = delete;
        Noting& operator=(const Noting&) = delete;
    };

    /** While it lives this thread's questions have the answers that were noted. */
    class Giving {
    public:
        explicit Giving(const PlatformAnswers& answers);
        ~Giving();
        Giving(const Giving&) = delete;
        Giving& operator=(const Giving&) = delete;
    };

    void NoteShares(const KLIBC_SZLIST* names);
    void NoteShare(const char* name, const VORN_SHARE& share);
    void NoteVolumes(const VORN_MOUNT_VOL_INFO* chain);
    void NoteHidden(const KLIBC_SZLIST* list);

    /** How many there are. */
    size_t Shares() const { return shareNames_.size(); }

    int GiveShares(KLIBC_SZLIST** names) const;
    int GiveShare(const char* name, VORN_SHARE** share) const;
    VORN_MOUNT_VOL_INFO* GiveVolumes() const;
    int GiveHidden(KLIBC_SZLIST** list) const;

private:
    std::vector<std::string> shareNames_;
    std::unordered_map<std::string, std::string> sharePaths_;
    std::vector<VORN_MOUNT_VOL_INFO> volumes_;
    std::vector<std::string> hidden_;
};

}  // namespace cli

#endif
