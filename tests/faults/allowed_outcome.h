// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FAULTS_ALLOWED_OUTCOME_H
#define VORN_TESTS_FAULTS_ALLOWED_OUTCOME_H

#include <string>

#include "tests/faults/operations.h"

namespace faults {

/**
 * What is not as documented in the outcome of an operation whose memory was short once; empty when
 * all is. A fault changes nothing, or it is reported: whatever an answer lacks has its log line.
 *
 * @param good  the outcome without a fault
 * @param log   what went to the system log with the fault, see KeptLog()
 */
std::string WhatIsWrong(const Operation& operation, const std::string& good,
                        const std::string& outcome, const std::string& log);

}  // namespace faults

#endif
