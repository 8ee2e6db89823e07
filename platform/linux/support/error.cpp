// SPDX-License-Identifier: MIT
#include "vorn/platform/error.h"

namespace {
thread_local int lastError = 0;
}

void KLIBCErrSetEx(int code, const char* /*source*/, int /*line*/) {
    lastError = code;
}

int KLIBCErrGet(void) {
    return lastError;
}
