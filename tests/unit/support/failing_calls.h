// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_FAILING_CALLS_H
#define VORN_TESTS_UNIT_SUPPORT_FAILING_CALLS_H

#include <map>
#include <set>
#include <string>

namespace unit {

/**
 * Calls of the library that fail, whatever else is scripted: operations of the platform and calls
 * of the C library, by name and number. Operations fail with their error code, calls of the C
 * library with EIO.
 */
struct FailingCalls {
    std::map<std::string, std::set<int>> numbers; /**< counted from 1 */
    std::map<std::string, int> made;              /**< how many there were so far */
};

FailingCalls& TheFailingCalls();

/** Counts a call and says whether it is to fail. */
bool Fails(const char* function);

}  // namespace unit

#endif
