#ifndef VORN_CLI_PROCESS_GATE_PROTOCOL_H
#define VORN_CLI_PROCESS_GATE_PROTOCOL_H

/**
 * @file
 * What the worker and its parent say to each other, a byte a message.
 */

namespace cli {

constexpr char kGateEntered = 'e'; /**< worker: holds no output any more, the time runs */
constexpr char kGateLeft = 'l';    /**< worker: waits for its output */
constexpr char kGateOpened = 'o';  /**< parent: here it is, as SCM_RIGHTS */
constexpr int kGateLost = 2;       /**< exit status of a worker whose parent has gone */

/** Passes this process's standard output and standard error on. */
void SendOutputs(int socket);

/** Puts /dev/null in the place of standard output and standard error. */
void DropOutputs();

}  // namespace cli

#endif
