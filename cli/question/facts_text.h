// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_FACTS_TEXT_H
#define VORN_CLI_QUESTION_FACTS_TEXT_H

/**
 * @file
 * Facts as texts and numbers of their columns.
 */

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/question/columns.h"

namespace cli {

/** "-" for what isn't known. */
std::string FactText(const Facts* facts, Column column);

std::vector<std::int64_t> FactNumbers(const Facts* facts, Column column);

/** Bytes of all files that a record is about; nothing where that has no meaning, as for folders. */
std::optional<std::uint64_t> SizeOf(const Facts& facts, Column sizeOrSpace);

/** Such as "POSIX write 10-29, awaited by 123 (smbd)". */
std::string LockText(const HeldLock& held);
/** Names that people know: "POSIX", "flock", "OFD", "lease". */
std::string LockKind(const KernelLock& lock);
/** "read", "write", "unlock". */
std::string LockAccess(const KernelLock& lock);

/** "8:1" */
std::string DeviceText(dev_t device);

/** Whether one of the descriptors is open in all of the ways that a text such as "rw" names. */
bool HasMode(const Facts* facts, std::string_view letters);

/** A moment as the column of access times has it; nothing for another text. */
std::optional<std::int64_t> ParseLocalTime(const std::string& text);

}  // namespace cli

#endif
