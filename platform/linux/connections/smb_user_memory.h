// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SMB_USER_MEMORY_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SMB_USER_MEMORY_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/linux/connections/smb_query.h"
#include "platform/linux/connections/smb_status.h"

namespace vornplatform {

/** An smbd; the start time tells it from an earlier process of the same pid. */
struct SmbServer {
    pid_t pid = 0;
    std::uint64_t startTime = 0;
};

/** What is known of SMB servers. */
struct SmbAnswer {
    SmbUsers users;                   /**< several where not all files are known to be one user's */
    std::unordered_set<pid_t> shared; /**< servers with sessions of several users */
};

/**
 * Users of SMB servers, remembered between enumerations, because asking starts a program.
 *
 * It is asked when a server is not known yet, or when the answer is older than kMaxAge, so that a
 * further user on a known connection shows up within that time; but at most once a call, and after
 * a failure not before kPause has passed. A server without an authenticated session stays unknown
 * and is asked for at each call. So are those whose files a server of several users has open, since
 * files come and go.
 *
 * Not safe for use by several threads at once.
 */
class SmbUserMemory {
public:
    using Clock = std::chrono::steady_clock;
    /** Asks for the users of all servers; nothing on failure, which it has logged. */
    using Ask = std::function<std::optional<SmbUsers>(SmbQuestion)>;
    using Now = std::function<Clock::time_point()>;

    static constexpr std::chrono::seconds kMaxAge{60};
    static constexpr std::chrono::seconds kPause{10};

    explicit SmbUserMemory(Ask ask, Now now = Clock::now);

    /** @return the users of those servers that have any, each list as SmbUsers has it */
    SmbAnswer UsersOf(const std::vector<SmbServer>& servers);

private:
    struct Known {
        std::uint64_t startTime;
        std::vector<std::string> users;
    };

    bool Knows(const SmbServer& server) const;
    bool MustAsk(const std::vector<SmbServer>& servers, Clock::time_point now) const;
    SmbUsers Remembered(const std::vector<SmbServer>& servers) const;
    void Narrow(SmbAnswer& answer, Clock::time_point now);
    bool IsInPause(Clock::time_point now) const;
    void Remember(const std::vector<SmbServer>& servers, SmbUsers answer, Clock::time_point now);

    Ask ask_;
    Now now_;
    std::unordered_map<pid_t, Known> known_;
    std::optional<Clock::time_point> answered_;
    std::optional<Clock::time_point> failed_;
};

}  // namespace vornplatform

#endif
