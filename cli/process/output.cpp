// SPDX-License-Identifier: MIT
#include "cli/process/output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/failure.h"
#include "support/write_all.h"

namespace cli {

void Output::Flush() {
    const bool written = closed_ || support::WriteAll(fd_, text_);
    const int error = errno;
    text_.clear();
    if (written) {
        return;
    }
    if (error != EPIPE) {
        throw Failure(fmt::format("can't write the output: {}", std::strerror(error)));
    }
    closed_ = true;
}

void Complain(std::string_view text) noexcept {
    try {
        support::WriteAll(STDERR_FILENO, fmt::format("vorn-openfiles: {}\n", text));
    } catch (const std::exception&) {
        // No memory for the line: as good as no standard error.
    }
}

}  // namespace cli
