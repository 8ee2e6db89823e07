// SPDX-License-Identifier: MIT
#include "cli/question/step.h"

#include <fmt/format.h>
#include <syslog.h>

#include "cli/failure.h"
#include "vorn/platform/error.h"

namespace cli {

void MustSucceed(int result, const char* what, int line) {
    if (result >= 0) {
        return;
    }
    const int error = KLIBCErrGet();
    syslog(LOG_ERR, "%s:%d Failed to %s for file handle", "filehandle_enum", line, what);
    throw Failure(
        fmt::format("can't list the open files (error 0x{:04X}); the system log says why, and "
                    "'vorn-openfiles check' tells what this host lacks",
                    error));
}

}  // namespace cli
