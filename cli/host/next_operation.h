// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_NEXT_OPERATION_H
#define VORN_CLI_HOST_NEXT_OPERATION_H

#include <dlfcn.h>

namespace cli {

/** The operation of a name that this program stands before with one of its own. */
template <typename Operation>
Operation* NextOperation(const char* name) {
    return reinterpret_cast<Operation*>(dlsym(RTLD_NEXT, name));
}

}  // namespace cli

/** For an operation of the program: the dynamic linker finds it before the platform's. */
#define VORN_STANDS_BEFORE extern "C" __attribute__((visibility("default")))

#endif
