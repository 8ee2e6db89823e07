#include "cli/process/output.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "cli/question/snapshot.h"

namespace cli {
namespace {

/** What a reader that left the descriptor non-blocking makes us wait for. */
void WaitUntilWritable(int fd) {
    struct pollfd writable {};
    writable.fd = fd;
    writable.events = POLLOUT;
    poll(&writable, 1, -1);
}

}  // namespace

void Output::Flush() {
    std::string_view left = text_;
    while (!closed_ && !left.empty()) {
        const ssize_t written = write(fd_, left.data(), left.size());
        if (written >= 0) {
            left.remove_prefix(static_cast<size_t>(written));
        } else if (errno == EPIPE) {
            closed_ = true;
        } else if (errno == EAGAIN) {
            WaitUntilWritable(fd_);
        } else if (errno != EINTR) {
            const int error = errno;
            text_.clear();
            throw Failure(fmt::format("can't write the output: {}", std::strerror(error)));
        }
    }
    text_.clear();
}

void Complain(const std::string& text) {
    fmt::print(stderr, "vorn-openfiles: {}\n", text);
}

}  // namespace cli
