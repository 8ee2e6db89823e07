// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_FAILING_NEW_H
#define VORN_TESTS_UNIT_SUPPORT_FAILING_NEW_H

#include <boost/exception/exception.hpp>

namespace unit {

/** What FailingNew can throw instead of std::bad_alloc: of Boost's family and of no other. */
struct BoostFailure : boost::exception {};

/**
 * While it lives, one allocation fails: the one of that number, 1 being the next. The scripted
 * platform's own allocations don't count.
 *
 * Which number belongs to what is the library's business. So a test tries one number after the
 * other until Fired says that a call got by without an allocation of that number.
 */
class FailingNew {
public:
    enum class Throws { kBadAlloc, kBoost };

    explicit FailingNew(int number, Throws what = Throws::kBadAlloc);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    static bool Fired();
};

/** Allocations neither count nor fail while it lives. */
class FailingNewPause {
public:
    FailingNewPause();
    ~FailingNewPause();
    FailingNewPause(const FailingNewPause&) = delete;
    FailingNewPause& operator=(const FailingNewPause&) = delete;
};

}  // namespace unit

#endif
