// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_WRITE_ALL_H
#define VORN_SUPPORT_WRITE_ALL_H

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace support {

/**
 * Writes a whole text; waits where somebody made the descriptor non-blocking.
 *
 * @return false, with errno, where not all of it could be written. SIGPIPE must be ignored
 */
inline bool WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            struct pollfd writable = {fd, POLLOUT, 0};
            poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace support

#endif
