// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FAULTS_KEPT_LOG_H
#define VORN_TESTS_FAULTS_KEPT_LOG_H

#include <string>

namespace faults {

/**
 * What this process has sent to the system log since ForgetLog(), "<priority> text" a line. The
 * program's own syslog keeps it, without an allocation, and passes it on.
 */
std::string KeptLog();
void ForgetLog();

}  // namespace faults

#endif
