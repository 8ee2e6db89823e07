// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_KERNEL_UNAVAILABLE_H
#define VORN_CLI_HOST_KERNEL_UNAVAILABLE_H

/**
 * @file
 * Why the kernel's iterators can't be had.
 */

#include <string>

namespace cli {

/** What a reason is found from. */
struct KernelFacts {
    std::string status;          /**< /proc/self/status */
    std::string users;           /**< /proc/self/uid_map */
    std::string lockdown;        /**< /sys/kernel/security/lockdown */
    bool typeInformation = true; /**< /sys/kernel/btf/vmlinux is there, or /sys is not */
    std::string release;         /**< of the kernel */
};

KernelFacts OwnKernelFacts();

/** Why the kernel need not be asked, as half a sentence; empty where it must be. */
std::string WhyNotAsked(const KernelFacts& facts);

/** Why the kernel may have refused with this errno value. */
std::string WhyRefused(int error, const KernelFacts& facts);

}  // namespace cli

#endif
