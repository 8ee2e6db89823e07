// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FAULTS_OPERATIONS_H
#define VORN_TESTS_FAULTS_OPERATIONS_H

#include <string>
#include <vector>

namespace faults {

/** What a fault may do to an answer. */
enum class Kind {
    kC,       /**< nothing, but fail the operation with the code 0x0100 */
    kThrows,  /**< nothing, but throw std::bad_alloc */
    kFiles,   /**< what is documented for an enumeration; a line a file, columns between tabs */
    kTimes,   /**< the same for access times */
    kServices /**< the same for the kickable services; a line a service */
};

/** Something to call, whose outcome begins with "ok", "failed 0x0100" or "throws bad_alloc". */
struct Operation {
    const char* name;
    std::string (*call)(int failingAllocation);
    Kind kind;
    const char* part; /**< of the good answer, lest that be the answer of an empty host */
};

/** The operations of the stand-in, and the public functions of the library over it. */
const std::vector<Operation>& Operations();

}  // namespace faults

#endif
