#ifndef VORN_PLATFORM_LINUX_PROCESSES_USER_NAMES_H
#define VORN_PLATFORM_LINUX_PROCESSES_USER_NAMES_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <unordered_map>

namespace vornplatform {

/** Names of users, each asked for once in the life of the object. */
class UserNames {
public:
    /** The name that the name service has (getpwuid_r), else the number; never empty. */
    const std::string& NameOf(uid_t uid);

    /** The id of a user by name (getpwnam_r), if the name service has it. */
    static std::optional<uid_t> FindUser(const char* name);

private:
    std::unordered_map<uid_t, std::string> names_;
};

}  // namespace vornplatform

#endif
