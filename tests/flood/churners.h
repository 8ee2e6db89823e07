#ifndef VORN_TESTS_FLOOD_CHURNERS_H
#define VORN_TESTS_FLOOD_CHURNERS_H

/**
 * @file
 * Processes that change the host as fast as they can while it is examined, and write down in
 * the shared truth what they do. All end with the process that started them.
 */

#include "truth.h"

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

/** Makes and removes shared folders with an open file. */
void StartShareChurner(Truth& truth);

/** Runs a session of SSH_COMMAND after the other; nothing without one. */
void StartSessionChurner(Truth& truth, const char* sshCommand);

}  // namespace flood

#endif
