// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_UNDO_H
#define VORN_SLICES_UNDO_H

#include "slices/named_slices.h"
#include "slices/service_groups.h"

namespace slices {

/** Puts all processes back into the root and removes the groups of some slices; false where one of
 * them could not be removed. */
bool RemoveGroups(const ServiceGroups& services, const Names& slices);

/** Waits, for some seconds at most, until unmounting ends the hierarchy. */
bool AwaitRelease(const ServiceGroups& services);

}  // namespace slices

#endif
