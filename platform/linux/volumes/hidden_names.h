#ifndef VORN_PLATFORM_LINUX_VOLUMES_HIDDEN_NAMES_H
#define VORN_PLATFORM_LINUX_VOLUMES_HIDDEN_NAMES_H

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
 * @return 0, or the error code (not set) of why the administrator's list can't be read
 */
int ReadHiddenNames(std::vector<std::string>& names);

}  // namespace vornplatform

#endif
