// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_PASS_OUTPUTS_H
#define VORN_CLI_PROCESS_SUPERVISION_PASS_OUTPUTS_H

namespace cli {

/**
 * Passes this process's standard output and standard error on, with kGateOpened.
 *
 * @return false, with errno, when they couldn't be sent
 */
bool SendOutputs(int socket);

/**
 * Puts what SendOutputs passed on in the place of this process's own.
 *
 * @return false when something else came, or nothing
 */
bool ReceiveOutputs(int socket);

}  // namespace cli

#endif
