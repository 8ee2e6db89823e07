// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_OUTPUT_FILE_H
#define VORN_CLI_PROCESS_OUTPUT_FILE_H

#include <string>
#include <string_view>

namespace cli {

/**
 * Puts a text where a path says.
 *
 * A regular file is replaced in one step: readers find the old one or the new one, whole. So is
 * one that a symbolic link leads to; the link stays. Where nothing is, a file is made. What is no
 * file but can be written to, a FIFO or a character device, is written to. Whatever else stands
 * there stays as it is.
 *
 * @throws Failure
 */
void WriteOutputFile(const std::string& path, std::string_view text);

}  // namespace cli

#endif
