// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_MOUNTS_BELOW_H
#define VORN_CLI_QUESTION_HOLDERS_MOUNTS_BELOW_H

#include "cli/question/holders/source.h"

namespace cli {

/**
 * Mounts below a target in this mount namespace. Where else a target's file system is mounted keeps
 * nobody from unmounting it, but keeps the disk in use: that becomes a note.
 */
class MountsBelow : public Source {
public:
    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;
};

}  // namespace cli

#endif
