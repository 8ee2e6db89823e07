// SPDX-License-Identifier: MIT
#include "tests/unit/support/failing_calls.h"

#include "tests/unit/support/failing_new.h"

namespace unit {

FailingCalls& TheFailingCalls() {
    static FailingCalls& calls = *new FailingCalls;  // outlives every static object
    return calls;
}

bool Fails(const char* function) {
    const FailingNewPause pause;
    const int call = ++TheFailingCalls().made[function];
    const auto numbers = TheFailingCalls().numbers.find(function);
    return numbers != TheFailingCalls().numbers.end() && numbers->second.count(call) != 0;
}

}  // namespace unit
