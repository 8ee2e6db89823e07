#ifndef VORN_FAULTS_OPERATIONS_H
#define VORN_FAULTS_OPERATIONS_H

#include <string>
#include <vector>

namespace faults {

/** Something to call, whose outcome is a text: "ok ...", "failed 0x0100" or "throws ...". */
struct Operation {
    const char* name;
    std::string (*call)(int failingAllocation);
    /** Whether it may throw std::bad_alloc, and may leave things out as documented. */
    bool isCpp;
};

/** The operations of the stand-in, and the public functions of the library over it. */
const std::vector<Operation>& Operations();

}  // namespace faults

#endif
