// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_SWEEP_H
#define VORN_SLICES_SWEEP_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "groups/service_units.h"
#include "slices/named_slices.h"
#include "slices/service_groups.h"
#include "slices/trouble.h"
#include "slices/unified_groups.h"

namespace slices {

/**
 * Puts processes into the groups that are called like their units.
 *
 * Processes fork and end while they are moved, so a sweep is repeated until there was nothing left
 * to move.
 */
class Sweep {
public:
    using AskService = groups::ServiceUnits::AskService;

    Sweep(const UnifiedGroups& unified, const ServiceGroups& services, Troubles& troubles,
          AskService askService = groups::ServiceOfSession)
        : unified_(unified),
          services_(services),
          troubles_(troubles),
          askService_(std::move(askService)) {}

    /** Puts what some groups of v2 and those below hold into the groups of their units.
     *
     * @return whether nothing was left; false where new processes kept coming */
    bool Below(const std::set<std::string>& groups, const Names& named);

    /** The same of all; what has left its unit is put where it belongs, or back into the root, and
     * groups of slices that are named no more are removed. */
    bool All(const Names& named);

private:
    /** Members by unit, in rising order. */
    using Members = std::map<std::string, std::vector<pid_t>>;
    struct Pass;

    bool Repeat(const std::set<std::string>& groups, const Names& named, bool all);
    Members Wanted(Pass& pass) const;
    void BringIn(Pass& pass, const Members& wanted);
    void TakeOut(Pass& pass, const Members& wanted);
    void Put(Pass& pass, pid_t pid, std::string_view group);

    const UnifiedGroups& unified_;
    const ServiceGroups& services_;
    Troubles& troubles_;
    AskService askService_;
};

}  // namespace slices

#endif
