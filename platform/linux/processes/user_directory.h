// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_PROCESSES_USER_DIRECTORY_H
#define VORN_PLATFORM_LINUX_PROCESSES_USER_DIRECTORY_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <unordered_map>

namespace vornplatform {

/** What the name service knows of users. Throws HostError when descriptors or memory are short. */
class UserDirectory {
public:
    /** The name (getpwuid_r), else the number; never empty. Asked for once in the object's life. */
    const std::string& NameOf(uid_t uid);

    /** The id of a user by name (getpwnam_r), if there is one. */
    static std::optional<uid_t> IdOf(const char* name);

private:
    std::unordered_map<uid_t, std::string> names_;
};

}  // namespace vornplatform

#endif
