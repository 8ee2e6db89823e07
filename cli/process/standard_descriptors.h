// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_STANDARD_DESCRIPTORS_H
#define VORN_CLI_PROCESS_STANDARD_DESCRIPTORS_H

#include <initializer_list>

namespace cli {

/**
 * Opens those of the descriptors 0 to 2 that are closed on /dev/null, lest a file that is opened
 * later take their place. For the wrong direction: reading and writing fail as on the closed one.
 *
 * @throws Failure
 */
void OpenStandardDescriptors();

/**
 * Puts /dev/null in the place of some of them.
 *
 * @throws Failure
 */
void DropStandardDescriptors(std::initializer_list<int> fds);

}  // namespace cli

#endif
