// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_NAMED_SLICES_H
#define VORN_SLICES_NAMED_SLICES_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace slices {

/** Names of slices, such as "sshd.slice". */
using Names = std::set<std::string, std::less<>>;

/** Whether the text of a unit file names a service. */
bool NamesService(std::string_view unitFile);

/**
 * The slices whose unit file names a service. A file hides those of the same name in later folders,
 * also where it names none.
 *
 * @param folders  those that the library looks into, in its order
 */
Names FindNamedSlices(const std::vector<std::string>& folders = {"/usr/local/lib/systemd/system",
                                                                 "/usr/lib/systemd/system"});

}  // namespace slices

#endif
