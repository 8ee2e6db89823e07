// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_PASS_DESCRIPTORS_H
#define VORN_CLI_PROCESS_SUPERVISION_PASS_DESCRIPTORS_H

namespace cli {

/**
 * Passes this process's standard descriptors on, with kGateOpened.
 *
 * @return false, with errno, when they couldn't be sent
 */
bool SendStandardDescriptors(int socket);

/**
 * Puts what SendStandardDescriptors passed on in the place of this process's own.
 *
 * @return false when something else came, or nothing
 */
bool ReceiveStandardDescriptors(int socket);

}  // namespace cli

#endif
