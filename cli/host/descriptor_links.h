// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_DESCRIPTOR_LINKS_H
#define VORN_CLI_HOST_DESCRIPTOR_LINKS_H

#include <string>
#include <string_view>

#include "support/descriptor.h"

namespace cli {

/**
 * While it lives, this thread reads the links of a folder /proc/<pid>/fd by way of that folder,
 * opened once: to find the folder anew for each link takes the kernel longer than to read it.
 */
class DescriptorLinks {
public:
    DescriptorLinks();
    ~DescriptorLinks();
    DescriptorLinks(const DescriptorLinks&) = delete;
    DescriptorLinks& operator=(const DescriptorLinks&) = delete;

    /** As readlink(2), for any link. */
    static ssize_t Read(const char* link, char* buffer, size_t size);

private:
    void Enter(std::string_view folder);

    std::string name_; /**< of the folder, with its slash */
    support::Descriptor folder_;
};

}  // namespace cli

#endif
