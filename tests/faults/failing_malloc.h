// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FAULTS_FAILING_MALLOC_H
#define VORN_TESTS_FAULTS_FAILING_MALLOC_H

namespace faults {

/**
 * While it lives, one allocation of this thread fails, whoever makes it: the library, the stand-in
 * or what they use. Under AddressSanitizer, which has an allocator of its own, only operator new
 * is seen.
 */
class FailingMalloc {
public:
    /** @param number  1 being the next; 0 for none */
    explicit FailingMalloc(int number);
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;

    /** Whether the allocation of that number was reached. */
    static bool Fired();
};

/** Blocks that are allocated now, in the whole process; 0 under AddressSanitizer. */
long LiveBlocks();

}  // namespace faults

#endif
