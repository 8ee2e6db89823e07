// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_READ_ALL_H
#define VORN_SUPPORT_READ_ALL_H

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>

namespace support {

enum class ReadEnd {
    kWhole, /**< to its end */
    kLimit, /**< there is more than the limit */
    kError  /**< errno says why */
};

/** What tells that a file has come to its end. */
enum class EndSign {
    kEmptyRead, /**< a read that gives nothing, as of any file */
    kShortRead  /**< a read that gives less than it was asked for, as of those files of /proc that
                     the kernel writes in one piece: saves the call that would give nothing */
};

/**
 * Reads what is left of a file into a text, up to a limit in bytes. Goes by what read() says and
 * not by the file's size: files of /proc have none, others grow or shrink meanwhile.
 *
 * @param text  holds in any case what could be read, at most limit bytes
 */
inline ReadEnd ReadAll(int fd, std::size_t limit, std::string& text,
                       EndSign sign = EndSign::kEmptyRead) {
    constexpr std::size_t kFirstStep = 4096;
    std::size_t used = 0;
    text.resize(kFirstStep);
    for (;;) {
        const ssize_t count = read(fd, &text[used], text.size() - used);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        used += count > 0 ? static_cast<std::size_t>(count) : 0;
        const bool ends = count == 0 || (sign == EndSign::kShortRead && used < text.size());
        if (count < 0 || ends || used > limit) {
            text.resize(std::min(used, limit));
            return count < 0 ? ReadEnd::kError : used > limit ? ReadEnd::kLimit : ReadEnd::kWhole;
        }
        if (used == text.size()) {
            text.resize(2 * used);
        }
    }
}

}  // namespace support

#endif
