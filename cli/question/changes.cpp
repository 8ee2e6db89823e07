// SPDX-License-Identifier: MIT
#include "cli/question/changes.h"

#include <set>
#include <string_view>
#include <utility>

namespace cli {
namespace {

using Key = std::pair<std::string_view, std::string_view>;

Key KeyOf(const FileRecord& file) {
    return {file.fullPath, file.process->pid};
}

std::set<Key> KeysOf(const Snapshot& look) {
    std::set<Key> keys;
    for (const FileRecord& file : look.files) {
        keys.insert(KeyOf(file));
    }
    return keys;
}

/** What one look has and another doesn't. */
std::vector<const FileRecord*> Added(const Snapshot& look, const Snapshot& other) {
    const std::set<Key> known = KeysOf(other);
    std::vector<const FileRecord*> added;
    for (const FileRecord& file : look.files) {
        if (known.count(KeyOf(file)) == 0) {
            added.push_back(&file);
        }
    }
    return added;
}

}  // namespace

Changes Compare(const Snapshot* last, const Snapshot& now) {
    static const Snapshot kNothing;
    const Snapshot& before = last == nullptr ? kNothing : *last;
    Changes changes;
    changes.first = last == nullptr;
    changes.opened = Added(now, before);
    changes.closed = Added(before, now);
    std::sort(changes.closed.begin(), changes.closed.end(),
              [](const FileRecord* a, const FileRecord* b) { return KeyOf(*a) < KeyOf(*b); });
    return changes;
}

}  // namespace cli
