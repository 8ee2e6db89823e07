#ifndef VORN_PLATFORM_LINUX_SUPPORT_FD_H
#define VORN_PLATFORM_LINUX_SUPPORT_FD_H

#include <unistd.h>

#include <utility>

namespace vornplatform {

/** Owner of a file descriptor. */
class Fd {
public:
    Fd() = default;
    explicit Fd(int fd) : fd_(fd) {}
    Fd(Fd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Fd& operator=(Fd&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Fd() { Reset(); }

    int Get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    /** Closes the descriptor; errno stays as it was. */
    void Reset();

private:
    int fd_ = -1;
};

}  // namespace vornplatform

#endif
