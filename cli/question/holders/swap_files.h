// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_SWAP_FILES_H
#define VORN_CLI_QUESTION_HOLDERS_SWAP_FILES_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

/** Paths of the files, not of the devices, in a text of `/proc/swaps`. */
std::vector<std::string> ParseSwapFiles(std::string_view text);

/** Files that the kernel swaps to. */
class SwapFiles : public Source {
public:
    explicit SwapFiles(std::string path = "/proc/swaps") : path_(std::move(path)) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    const std::string path_;
};

}  // namespace cli

#endif
