// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_CHANGES_H
#define VORN_CLI_QUESTION_CHANGES_H

/**
 * @file
 * What has changed since the last look.
 */

#include <map>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cli/question/snapshot.h"

namespace cli {

/** A record that outlives its snapshot. */
struct Remembered {
    OpenedFile file;
    bool deleted;
    Facts facts;

    Known About() const { return {deleted, &facts}; }
};

struct Changes {
    std::vector<Remembered> opened;
    std::vector<Remembered> closed;
    std::unordered_set<const OpenedFile*> fresh; /**< nodes of the snapshot that are opened */
    bool first = false;                          /**< nothing to compare with: all are opened */

    /** Opened since the last look; nothing is at the first. */
    bool IsNew(const OpenedFile& file) const { return !first && fresh.count(&file) != 0; }
    bool Any() const { return !opened.empty() || !closed.empty(); }
};

/** Remembers a look until the next. A record is known by its pid and its full path. */
class LastLook {
public:
    Changes Compare(Snapshot& snapshot);

private:
    using Key = std::pair<std::string, std::string>;

    std::map<Key, Remembered> known_;
    bool first_ = true;
};

}  // namespace cli

#endif
