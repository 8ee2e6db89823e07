// SPDX-License-Identifier: MIT
#include "cli/question/holders/mounts_below.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <set>
#include <unordered_set>

#include "cli/text/escape.h"
#include "support/text.h"

namespace cli {
namespace {

/** The mounts that stand on something in a target, and those on these. */
class MountsIn {
public:
    MountsIn(const MountTable& table, const Target& target) : table_(table), target_(target) {}

    bool Holds(const Mount& mount) {
        if (!mount.own || mount.id == target_.identity.mount || mount.id == mount.parent) {
            return false;
        }
        if (below_.count(mount.id) != 0) {
            return true;
        }
        const Mount* parent = table_.Find(mount.parent);
        const bool holds =
            parent != nullptr &&
            (parent->id == target_.identity.mount ? StandsIn(*parent, mount) : Holds(*parent));
        if (holds) {
            below_.insert(mount.id);
        }
        return holds;
    }

private:
    bool StandsIn(const Mount& parent, const Mount& mount) const {
        const auto inside = PathInside(parent, mount.point);
        return inside && support::IsAtOrBelow(*inside, target_.inside);
    }

    const MountTable& table_;
    const Target& target_;
    std::unordered_set<MountId> below_;
};

/** Whether an unmount of one reaches the other: they share a peer group, or receive from it. */
bool Follows(const Mount& other, const Mount& mount) {
    std::string_view groups = mount.groups;
    while (!groups.empty()) {
        std::string_view group = support::TakeUntil(groups, ' ');
        if (!support::ConsumePrefix(group, "shared:")) {
            continue;
        }
        for (const char* kind : {"shared:", "master:"}) {
            if ((" " + other.groups + " ").find(fmt::format(" {}{} ", kind, group)) !=
                std::string::npos) {
                return true;
            }
        }
    }
    return false;
}

void NoteElsewhere(const MountTable& table, const Target& target, Holders& holders) {
    const Mount* own = table.Find(target.identity.mount);
    if (own == nullptr || target.inside != own->root) {
        return;
    }
    std::set<std::string> points;
    size_t spaces = 0;
    for (const Mount& mount : table.All()) {
        if (mount.device != target.device || mount.id == own->id || Follows(mount, *own)) {
            continue;
        }
        mount.own ? static_cast<void>(points.insert(Escaped(mount.point, true)))
                  : static_cast<void>(++spaces);
    }
    if (!points.empty()) {
        holders.notes.push_back(fmt::format("{} stays in use when it is unmounted: mounted at {}",
                                            Escaped(target.path, true), fmt::join(points, ", ")));
    }
    if (spaces > 0) {
        holders.notes.push_back(fmt::format(
            "{} stays in use when it is unmounted: {} mount{} in other mount namespaces",
            Escaped(target.path, true), spaces, spaces == 1 ? "" : "s"));
    }
}

}  // namespace

void MountsBelow::Find(const Targets& targets, Wanted /*wanted*/, Holders& holders) {
    const MountTable& table = targets.Mounts();
    for (const Target& target : targets.All()) {
        MountsIn below(table, target);
        for (const Mount& mount : table.All()) {
            if (below.Holds(mount)) {
                Holder row;
                row.reason = Reason::kMount;
                row.files.push_back({-1, mount.point, false});
                holders.rows.push_back(std::move(row));
            }
        }
        NoteElsewhere(table, target, holders);
    }
}

}  // namespace cli
