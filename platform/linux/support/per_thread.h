// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SUPPORT_PER_THREAD_H
#define VORN_PLATFORM_LINUX_SUPPORT_PER_THREAD_H

#include <pthread.h>

#include <memory>

#include "platform/linux/support/host_error.h"

namespace vornplatform {

/**
 * One T for each thread, made when the thread first asks and gone when it ends.
 *
 * Not thread_local: where T has a destructor, the C library registers it when a thread first
 * touches the variable, and ends the whole process when memory is too short for that.
 */
template <typename T>
class PerThread {
public:
    PerThread() : error_(pthread_key_create(&key_, &Delete)) {}
    ~PerThread() {
        if (error_ == 0) {
            Delete(pthread_getspecific(key_));
            pthread_key_delete(key_);
        }
    }
    PerThread(const PerThread&) = delete;
    PerThread& operator=(const PerThread&) = delete;

    /** Throws std::bad_alloc when memory is short, HostError when the process has no more keys. */
    T& Get() {
        if (error_ != 0) {
            throw HostError(error_);
        }
        if (void* known = pthread_getspecific(key_)) {
            return *static_cast<T*>(known);
        }
        auto made = std::make_unique<T>();
        if (const int error = pthread_setspecific(key_, made.get()); error != 0) {
            throw HostError(error);
        }
        return *made.release();
    }

private:
    static void Delete(void* value) { delete static_cast<T*>(value); }

    pthread_key_t key_ = 0;
    int error_;
};

}  // namespace vornplatform

#endif
