// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_USERS_H
#define VORN_SUPPORT_USERS_H

#include <pwd.h>
#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

namespace support {

/**
 * Asks the name service for a user and hands the record found, or null, to a reader.
 *
 * @param query  getpwuid_r or getpwnam_r without its first argument
 * @return 0 or the errno value of the query; any but that of a shortage may as well mean that there
 *         is no such user, according to the service asked
 */
template <typename Query, typename Reader>
int LookUpUser(const Query& query, const Reader& reader) {
    constexpr std::size_t kFirstBufferSize = 1024;
    constexpr std::size_t kLastBufferSize = std::size_t{1} << 20;
    std::vector<char> buffer(kFirstBufferSize);
    passwd record{};
    passwd* found = nullptr;
    int error = query(&record, buffer.data(), buffer.size(), &found);
    while (error == EINTR || (error == ERANGE && buffer.size() < kLastBufferSize)) {
        buffer.resize(error == ERANGE ? buffer.size() * 2 : buffer.size());
        error = query(&record, buffer.data(), buffer.size(), &found);
    }
    reader(found);
    return error;
}

/**
 * The name of a user, else the number; never empty.
 *
 * @param error  receives what LookUpUser returns
 */
inline std::string UserName(uid_t uid, int& error) {
    std::string name = std::to_string(uid);
    error = LookUpUser(
        [uid](auto... rest) { return getpwuid_r(uid, rest...); },
        [&name](const passwd* found) {
            if (found != nullptr && found->pw_name != nullptr && *found->pw_name != '\0') {
                name = found->pw_name;
            }
        });
    return name;
}

}  // namespace support

#endif
