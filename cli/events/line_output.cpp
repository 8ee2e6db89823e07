// SPDX-License-Identifier: MIT
#include "cli/events/line_output.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "cli/failure.h"

namespace cli {

/** Writes as much as a pipe takes without waiting, once it takes any. */
void LineOutput::Write() {
    const size_t left = text_.size() - written_;
    const ssize_t written = write(fd_, text_.data() + written_, std::min<size_t>(left, PIPE_BUF));
    if (written < 0 && errno != EPIPE && errno != EAGAIN && errno != EINTR) {
        throw Failure(fmt::format("can't write the output: {}", std::strerror(errno)));
    }
    closed_ = written < 0 && errno == EPIPE;
    written_ += written > 0 ? static_cast<size_t>(written) : 0;
    if (written_ == text_.size()) {
        text_.clear();
        written_ = 0;
    }
}

bool LineOutput::Flush() {
    while (!IsDone()) {
        struct pollfd watched[] = {{fd_, POLLOUT, 0}, {signals_, POLLIN, 0}};
        poll(watched, 2, -1);
        if (watched[0].revents == 0 && watched[1].revents != 0) {
            return false;
        }
        if (watched[0].revents != 0) {
            Write();
        }
    }
    return !closed_;
}

bool LineOutput::FlushLast() {
    constexpr int kPatience = 1000;
    while (!IsDone()) {
        struct pollfd watched = {fd_, POLLOUT, 0};
        if (poll(&watched, 1, kPatience) == 0) {
            return false;
        }
        Write();
    }
    return !closed_;
}

}  // namespace cli
