// SPDX-License-Identifier: MIT
#include "tests/faults/failing_malloc.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local int allocationsLeft = 0;  // 0: nothing is to fail
thread_local bool fired = false;
std::atomic<long> liveBlocks{0};

bool IsDue() {
    if (allocationsLeft == 0 || --allocationsLeft != 0) {
        return false;
    }
    fired = true;
    errno = ENOMEM;
    return true;
}

}  // namespace

namespace faults {

FailingMalloc::FailingMalloc(int number) {
    fired = false;
    allocationsLeft = number;
}

FailingMalloc::~FailingMalloc() {
    allocationsLeft = 0;
}

bool FailingMalloc::Fired() {
    return fired;
}

long LiveBlocks() {
    return liveBlocks;
}

}  // namespace faults

#ifdef VORN_ADDRESS_SANITIZER

void* operator new(std::size_t size) {
    void* block = IsDue() ? nullptr : std::malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return IsDue() ? nullptr : std::malloc(size);
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return operator new(size, nothrow);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

#else

// The C library's own allocator under the names that it keeps for such a case.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    void* block = IsDue() ? nullptr : __libc_malloc(size);
    liveBlocks += block != nullptr ? 1 : 0;
    return block;
}

void* calloc(std::size_t count, std::size_t size) {
    void* block = IsDue() ? nullptr : __libc_calloc(count, size);
    liveBlocks += block != nullptr ? 1 : 0;
    return block;
}

void* realloc(void* block, std::size_t size) {
    void* moved = IsDue() ? nullptr : __libc_realloc(block, size);
    liveBlocks += block == nullptr && moved != nullptr ? 1 : 0;
    return moved;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    void* block = IsDue() ? nullptr : __libc_memalign(alignment, size);
    liveBlocks += block != nullptr ? 1 : 0;
    return block;
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    liveBlocks -= block != nullptr ? 1 : 0;
    __libc_free(block);
}

}  // extern "C"

#endif
