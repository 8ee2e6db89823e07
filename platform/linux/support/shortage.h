#ifndef VORN_PLATFORM_LINUX_SUPPORT_SHORTAGE_H
#define VORN_PLATFORM_LINUX_SUPPORT_SHORTAGE_H

#include <cerrno>
#include <new>

namespace vornplatform {

/**
 * Throws std::bad_alloc for an errno value that says that memory or descriptors are short, lest
 * what could not be opened be taken for something that is not there. Operations report that as
 * KLIBC_ERR_RESOURCE.
 */
inline void ThrowOnShortage(int error) {
    if (error == ENOMEM || error == EMFILE || error == ENFILE) {
        throw std::bad_alloc();
    }
}

}  // namespace vornplatform

#endif
