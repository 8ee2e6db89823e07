#include "platform/linux/support/fd.h"

#include <cerrno>

namespace vornplatform {

void Fd::Reset() {
    if (fd_ < 0) {
        return;
    }
    const int saved = errno;
    close(std::exchange(fd_, -1));
    errno = saved;
}

}  // namespace vornplatform
