// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SOURCES_SOURCES_H
#define VORN_CLI_QUESTION_SOURCES_SOURCES_H

#include <memory>

#include "cli/question/sources/record_source.h"

namespace cli {

/** As --source has them. */
enum class SourceKind { kAuto, kIterator, kWalk };

/**
 * The source of an enumeration. kAuto takes the kernel's iterator where it can be had, and the
 * walk of /proc everywhere else.
 *
 * @throws Failure, with the reason, when kIterator is asked for and can't be had
 */
std::unique_ptr<RecordSource> MakeSource(SourceKind kind);

}  // namespace cli

#endif
