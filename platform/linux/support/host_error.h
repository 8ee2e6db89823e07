// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SUPPORT_HOST_ERROR_H
#define VORN_PLATFORM_LINUX_SUPPORT_HOST_ERROR_H

#include <cerrno>
#include <exception>

namespace vornplatform {

/**
 * A failure of the host, by its errno value: that of the call that failed, EPROTO for a text in
 * another form than it must have, EINVAL for a file that can't be such a file.
 */
class HostError : public std::exception {
public:
    explicit HostError(int error) noexcept : error_(error) {}

    int Error() const noexcept { return error_; }
    const char* what() const noexcept override { return "the host failed"; }

private:
    int error_;
};

/** Whether an errno value says that the host has no such file, process or device. */
inline bool IsNothingThere(int error) {
    return error == ENOENT || error == ESRCH || error == ENXIO || error == ENODEV;
}

/** Whether it says that this caller may not have it. */
inline bool IsWithheld(int error) {
    return error == EACCES || error == EPERM;
}

/** Whether it says that memory or descriptors are short: what it stands for may well be there. */
inline bool IsShortage(int error) {
    return error == ENOMEM || error == EMFILE || error == ENFILE;
}

/** For whoever goes on without a source: an answer must not be passed off for the whole because
 *  something was short while it was made. */
inline void PassOnShortage(const HostError& error) {
    if (IsShortage(error.Error())) {
        throw HostError(error.Error());
    }
}

}  // namespace vornplatform

#endif
