// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_REAL_FUNCTION_H
#define VORN_TESTS_UNIT_SUPPORT_REAL_FUNCTION_H

#include <dlfcn.h>

namespace unit {

/** The function that the test program's own definition hides. */
template <typename Function>
Function* Real(Function* /*hidden*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace unit

#endif
