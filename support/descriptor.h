// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_DESCRIPTOR_H
#define VORN_SUPPORT_DESCRIPTOR_H

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace support {

/** Owner of a file descriptor; false where there is none. */
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor() { Reset(); }

    int Get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    /** Closes the descriptor; errno stays as it was. */
    void Reset() {
        if (fd_ >= 0) {
            const int saved = errno;
            close(std::exchange(fd_, -1));
            errno = saved;
        }
    }

private:
    int fd_ = -1;
};

}  // namespace support

#endif
