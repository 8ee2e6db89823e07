// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_VOLUMES_H
#define VORN_CLI_HOST_VOLUMES_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/failure.h"

namespace cli {

/** A PATH that is on no volume. */
class PathElsewhere : public Failure {
public:
    using Failure::Failure;
};

/** Mount points of the data volumes, from the platform. Empty when there is none. */
std::vector<std::string> MountedVolumes();

/** The one of some volumes that a path is on, the lowest where they lie in each other; or empty. */
std::string_view LowestVolume(std::string_view path, const std::vector<std::string>& volumes);

/**
 * PATHs as the kernel names them: absolute, without links, "." and "..". What doesn't exist any
 * more is resolved as far as it does: its deleted files may still be open.
 *
 * @throws PathElsewhere for a path that is on no volume, Failure for one that can't be resolved
 */
std::vector<std::string> ResolvedPaths(const std::vector<std::string>& paths,
                                       const std::vector<std::string>& volumes);

/** The first of some paths that does not exist, or is a link to nowhere; empty when all do. */
std::string FirstMissing(const std::vector<std::string>& paths);

}  // namespace cli

#endif
