// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_SEARCH_MEMORY_H
#define VORN_PLATFORM_LINUX_SOCKETS_SEARCH_MEMORY_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>

namespace vornplatform {

/** What a search of all descriptors has told, so that the next search can do without one. */
struct SearchFacts {
    std::unordered_set<std::string> programs;    /**< keep their clients' sockets further up */
    std::unordered_set<std::uint64_t> listeners; /**< are held by no process: the kernel's own */
    std::unordered_set<std::uint64_t> sockets;   /**< make no process the server of a client */
};

/**
 * Keeps what the last search of all descriptors has told, for as long as kMaxAge: sockets may find
 * a holder yet, and programs may stop serving. Safe for use by several threads.
 */
class SearchMemory {
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    static constexpr std::chrono::seconds kMaxAge{60};

    explicit SearchMemory(Now now = Clock::now);

    /** Never null. */
    std::shared_ptr<const SearchFacts> Facts() const;
    void Replace(SearchFacts facts);

private:
    Now now_;
    mutable std::mutex mutex_;
    std::shared_ptr<const SearchFacts> facts_;
    Clock::time_point learned_;
};

}  // namespace vornplatform

#endif
