// SPDX-License-Identifier: MIT
#include "slices/sweep.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace slices {

struct Sweep::Pass {
    const std::set<std::string>& groups;
    const Names& named;
    groups::ServiceUnits& units;
    /** Whether another look is due: something was moved, or has ended and may have left children.
     */
    bool changed = false;
    bool refused = false;
};

bool Sweep::Below(const std::set<std::string>& groups, const Names& named) {
    return Repeat(groups, named, false);
}

bool Sweep::All(const Names& named) {
    return Repeat({""}, named, true);
}

bool Sweep::Repeat(const std::set<std::string>& groups, const Names& named, bool all) {
    constexpr int kMostPasses = 100;
    groups::ServiceUnits units(askService_);
    for (int i = 0; i < kMostPasses; ++i) {
        Pass pass{groups, named, units};
        const Members wanted = Wanted(pass);
        BringIn(pass, wanted);
        if (all) {
            TakeOut(pass, wanted);
        }
        if (!pass.refused) {
            troubles_.Over("move");
        }
        if (!pass.changed) {
            return true;
        }
    }
    return false;
}

Sweep::Members Sweep::Wanted(Pass& pass) const {
    Members wanted;
    for (const std::string& top : pass.groups) {
        unified_.Visit(top, pass.named, [&](const std::string& group) {
            if (group.empty()) {
                return;
            }
            const std::string unit = pass.units.OfPath(group);
            if (pass.named.count(unit) != 0) {
                const std::vector<pid_t> members = MembersOf(unified_.FolderOf(group));
                std::vector<pid_t>& all = wanted[unit];
                all.insert(all.end(), members.begin(), members.end());
            }
        });
    }
    for (auto& [unit, members] : wanted) {
        std::sort(members.begin(), members.end());
    }
    return wanted;
}

std::vector<pid_t> Without(const std::vector<pid_t>& members, const std::vector<pid_t>& others) {
    std::vector<pid_t> left;
    std::set_difference(members.begin(), members.end(), others.begin(), others.end(),
                        std::back_inserter(left));
    return left;
}

void Sweep::BringIn(Pass& pass, const Members& wanted) {
    for (const auto& [unit, members] : wanted) {
        if (members.empty()) {
            continue;
        }
        for (const pid_t pid : Without(members, services_.Members(unit))) {
            Put(pass, pid, unit);
        }
    }
}

// Most of them are new children of those that were counted.
void Sweep::TakeOut(Pass& pass, const Members& wanted) {
    for (const std::string& group : services_.Names()) {
        const auto known = wanted.find(group);
        const std::vector<pid_t> members = services_.Members(group);
        const bool isNamed = pass.named.count(group) != 0;
        for (const pid_t pid : known == wanted.end() ? members : Without(members, known->second)) {
            const std::string unit = pass.units.OfProcess(std::to_string(pid));
            // One that has ended, or a session that its login manager has not told of yet.
            if (unit.empty() || (unit == group && isNamed)) {
                continue;
            }
            Put(pass, pid, pass.named.count(unit) != 0 ? unit : "");
        }
        if (!isNamed) {
            services_.Remove(group);
        }
    }
}

void Sweep::Put(Pass& pass, pid_t pid, std::string_view group) {
    const Move move = services_.Put(pid, group);
    if (move != Move::kRefused) {
        pass.changed = true;
        return;
    }
    pass.refused = true;
    troubles_.Report("move", "process " + std::to_string(pid) + " can't be moved to /" +
                                 std::string(group) + ": " + std::strerror(errno));
}

}  // namespace slices
