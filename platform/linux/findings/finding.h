// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_FINDING_H
#define VORN_PLATFORM_LINUX_FINDINGS_FINDING_H

#include <cstdlib>
#include <string>
#include <vector>

#include "support/owner.h"
#include "vorn/platform/finding.h"

namespace vornplatform {

/** A finding before it is laid out for the caller. */
struct Finding {
    std::string subject;
    int state = VORN_FINDING_OK;
    std::string text;
    std::string advice = {};
    bool costsAnswers = false;
};

using Findings = std::vector<Finding>;
using FindingBlock = support::Owner<VORN_FINDING, std::free>;

/** Lays findings out in one block of malloc, texts behind them. Null for none. Throws bad_alloc. */
FindingBlock BuildFindingBlock(const Findings& findings);

/** "a, b and 3 more": the first few of many words. */
std::string FirstFew(const std::vector<std::string>& words, size_t shown);

}  // namespace vornplatform

#endif
