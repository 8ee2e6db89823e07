// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_VOLUMES_HIDDEN_LIST_H
#define VORN_PLATFORM_LINUX_VOLUMES_HIDDEN_LIST_H

#include <string>
#include <string_view>
#include <vector>

namespace vornplatform {

/** The administrator's list; replaces the built-in one where it exists. */
constexpr char kHiddenListPath[] = "/etc/vorn/hidden-directories";

/**
 * The items of a hidden-directory list: one a line without the white space around it; blank lines
 * and those that begin with "#" are none.
 */
std::vector<std::string> ParseHiddenList(std::string_view text);

/**
 * The texts that mark a path as hidden: the administrator's, or else the built-in ones.
 *
 * @throw HostError  when the administrator's list is there and can't be read
 */
std::vector<std::string> ReadHiddenList();

}  // namespace vornplatform

#endif
