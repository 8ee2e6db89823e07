// SPDX-License-Identifier: MIT
#include "tests/unit/support/failing_new.h"

#include <new>

#include "tests/unit/support/real_function.h"

namespace {

int allocationsLeft = 0;  // 0: nothing is to fail
int pauses = 0;
bool fired = false;
unit::FailingNew::Throws thrown;

void FailIfDue() {
    if (allocationsLeft == 0 || pauses != 0 || --allocationsLeft != 0) {
        return;
    }
    fired = true;
    if (thrown == unit::FailingNew::Throws::kBoost) {
        throw unit::BoostFailure();
    }
    throw std::bad_alloc();
}

}  // namespace

namespace unit {

FailingNew::FailingNew(int number, Throws what) {
    fired = false;
    thrown = what;
    allocationsLeft = number;
}

FailingNew::~FailingNew() {
    allocationsLeft = 0;
}

bool FailingNew::Fired() {
    return fired;
}

FailingNewPause::FailingNewPause() {
    ++pauses;
}

FailingNewPause::~FailingNewPause() {
    --pauses;
}

}  // namespace unit

/** Handed on to the one it hides, so that operator delete stays the right partner. */
void* operator new(std::size_t size) {
    FailIfDue();
#ifdef VORN_ADDRESS_SANITIZER
    // Its own lie in the program as well, where a search for the next one does not find them.
    return operator new(size, std::nothrow);
#else
    static auto* const real = unit::Real(static_cast<void* (*)(std::size_t)>(nullptr), "_Znwm");
    return real(size);
#endif
}
