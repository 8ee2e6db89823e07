// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_VOLUMES_VOLUME_TABLE_H
#define VORN_PLATFORM_LINUX_VOLUMES_VOLUME_TABLE_H

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace vornplatform {

/** Whether a path names a volume: "/volume" and more, in one component, such as /volumeUSB1. */
bool IsVolume(std::string_view path);

/** Whether a path is a volume or lies in one. */
bool IsOnVolume(std::string_view path);

/**
 * The mount points of a mount table that are volumes, each once, in the table's order.
 *
 * @param table  open on text in the form of /proc/self/mounts
 */
std::vector<std::string> SelectVolumes(FILE* table);

/** The same of /proc/self/mounts. HostError where that can't be read, or isn't there. */
std::vector<std::string> ReadVolumes();

}  // namespace vornplatform

#endif
