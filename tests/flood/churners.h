// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FLOOD_CHURNERS_H
#define VORN_TESTS_FLOOD_CHURNERS_H

/**
 * @file
 * Processes that change the host as fast as they can while it is examined, and write down in
 * the shared truth what they do. All end with the process that started them.
 */

#include "tests/flood/truth.h"

namespace flood {

/** Below it lies everything that holders and most churners open. */
constexpr char kShareFolder[] = "/volume1/photo";

/** Starts holders of files that stay open: 20 processes with 20 files each. */
void StartHolders(Truth& truth);

/** Starts and ends 400 processes a second, each with one open file. */
void StartProcessChurner(Truth& truth);

/** Opens, renames, deletes and closes 256 files, some 1,000 steps a second. */
void StartFileChurner(Truth& truth);

/** Mounts and unmounts volumes with an open file on /volume10 to /volume13. */
void StartMountChurner(Truth& truth);

/** Makes and removes top-level folders, which are shares, with an open file. */
void StartFolderChurner(Truth& truth);

/**
 * Changes the list of shares itself: NFS exports with and without the folder /volume2/exported,
 * and none at all, when all top-level folders are shares. What the other churners open is shared
 * in all three.
 */
void StartExportChurner(Truth& truth);

/** Runs a session of SSH_COMMAND after the other. */
void StartSessionChurner(Truth& truth, const std::string& sshCommand);

}  // namespace flood

#endif
