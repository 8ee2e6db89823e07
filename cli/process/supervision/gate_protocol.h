// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_GATE_PROTOCOL_H
#define VORN_CLI_PROCESS_SUPERVISION_GATE_PROTOCOL_H

/**
 * @file
 * What the worker and its supervisor say to each other, a byte a message.
 */

namespace cli {

/** @name The worker's. @{ */
constexpr char kGateEntered = 'e';  /**< has let go of its descriptors, the time runs */
constexpr char kGateLeft = 'l';     /**< waits for its standard descriptors */
constexpr char kGateFound = 'f';    /**< a look has found something, said once */
constexpr char kScreenWanted = 's'; /**< waits for the terminal to be ready for drawing */
constexpr char kScreenDone = 'd';   /**< waits for the terminal to be as it was */
/** @} */

/** @name The supervisor's. @{ */
constexpr char kGateOpened = 'o'; /**< here are the standard descriptors, as SCM_RIGHTS */
constexpr char kScreenSet = 'a';  /**< the terminal is as it was wanted */
/** @} */

constexpr int kGateLost = 3; /**< exit status of a worker that couldn't reach its supervisor */

}  // namespace cli

#endif
