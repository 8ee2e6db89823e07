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

/**
 * Reads what is left of a file into a text, up to a limit in bytes. Goes by what read() says and
 * not by the file's size: files of /proc have none, others grow or shrink meanwhile.
 *
 * @param text  holds in any case what could be read, at most limit bytes
 */
inline ReadEnd ReadAll(int fd, std::size_t limit, std::string& text) {
    constexpr std::size_t kFirstStep = 4096;
    std::size_t used = 0;
    text.resize(kFirstStep);
    for (;;) {
        const ssize_t count = read(fd, &text[used], text.size() - used);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        used += count > 0 ? static_cast<std::size_t>(count) : 0;
        if (count <= 0 || used > limit) {
            text.resize(std::min(used, limit));
            return count < 0 ? ReadEnd::kError : count == 0 ? ReadEnd::kWhole : ReadEnd::kLimit;
        }
        if (used == text.size()) {
            text.resize(2 * used);
        }
    }
}

}  // namespace support

#endif
