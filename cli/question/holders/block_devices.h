// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_BLOCK_DEVICES_H
#define VORN_CLI_QUESTION_HOLDERS_BLOCK_DEVICES_H

#include <string>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

/**
 * Loop devices on a file, and the device-mapper and md devices that are built upon these, on their
 * partitions or on one another.
 */
class BlockDevices : public Source {
public:
    /** @param folder  where the kernel lists block devices */
    explicit BlockDevices(std::string folder = "/sys/block") : folder_(std::move(folder)) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    void FindLoop(const Targets& targets, const std::string& name, Holders& holders) const;
    /** @param below  the devices that have been followed so far, bottom first */
    void FindUpon(const std::string& device, const UsedFile& file, std::vector<std::string> below,
                  Holders& holders) const;
    void AddUpon(const std::string& name, const UsedFile& file,
                 const std::vector<std::string>& below, Holders& holders) const;
    std::string ReadName(const std::string& path) const;

    const std::string folder_;
};

}  // namespace cli

#endif
