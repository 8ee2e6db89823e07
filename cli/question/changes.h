// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_CHANGES_H
#define VORN_CLI_QUESTION_CHANGES_H

/**
 * @file
 * What has changed since the last look; open_files.h finds it out.
 */

#include <algorithm>
#include <vector>

#include "cli/question/snapshot.h"

namespace cli {

/** Records of two looks, which outlive it. */
struct Changes {
    std::vector<const FileRecord*> opened; /**< of the new look, in its order */
    std::vector<const FileRecord*> closed; /**< of the last look, by full path and pid */
    bool first = false;                    /**< nothing to compare with: all are opened */

    /** Opened since the last look; nothing is at the first. */
    bool IsNew(const FileRecord& file) const {
        return !first && std::binary_search(opened.begin(), opened.end(), &file);
    }
    bool Any() const { return !opened.empty() || !closed.empty(); }
};

}  // namespace cli

#endif
