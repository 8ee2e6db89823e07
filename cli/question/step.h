// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_STEP_H
#define VORN_CLI_QUESTION_STEP_H

namespace cli {

/**
 * Ends the enumeration where a step of the library has failed on this thread.
 *
 * @param result  of the step
 * @param what    text and line of EnumOpenedFile's log line for this step
 * @throws Failure, with the platform's error code
 */
void MustSucceed(int result, const char* what, int line);

}  // namespace cli

#endif
