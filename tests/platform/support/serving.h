// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_SERVING_H
#define VORN_TESTS_PLATFORM_SUPPORT_SERVING_H

#include <sys/types.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "tests/platform/support/temp_folder.h"

constexpr uid_t kNobody = 65534;

/** What a connection record says of its process. */
struct Seen {
    std::string host;
    std::string user;
    std::uint32_t type = 0;

    bool operator==(const Seen& other) const {
        return host == other.host && user == other.user && type == other.type;
    }
};
std::ostream& operator<<(std::ostream& out, const Seen& seen);

using List = std::vector<Seen>;

/** The records of one process, in their order. */
List SeenOf(pid_t pid);

/** The name of a user, or the number of one without a name. */
std::string NameOf(uid_t uid);

/** An executable that does nothing, under the name of a server. */
std::string MakeServer(const TempFolder& folder, const std::string& name);

/**
 * Becomes that executable, with a socket at the given descriptor; to be called in a child process.
 */
[[noreturn]] void BecomeServer(const std::string& program, int socket, int descriptor);

#endif
