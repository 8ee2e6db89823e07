// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_PROCESS_FACTS_H
#define VORN_CLI_QUESTION_HOLDERS_PROCESS_FACTS_H

#include <sys/types.h>

#include <string_view>

namespace cli {

/**
 * Whether an io_uring instance has files registered, which it holds without descriptors. True also
 * where it doesn't tell.
 *
 * @param text  of its file in `/proc/<pid>/fdinfo`
 */
bool HasRegisteredFiles(std::string_view text);

/** Whether it is one of the kernel's own, which have no files. */
bool IsKernelThread(pid_t pid);

}  // namespace cli

#endif
