// SPDX-License-Identifier: MIT
#include "platform/linux/processes/user_directory.h"

#include "platform/linux/support/host_error.h"
#include "support/users.h"

namespace vornplatform {
namespace {

void ThrowIfShort(int error) {
    if (IsShortage(error)) {
        throw HostError(error);
    }
}

std::string FindName(uid_t uid) {
    int error = 0;
    std::string name = support::UserName(uid, error);
    ThrowIfShort(error);
    return name;
}

}  // namespace

const std::string& UserDirectory::NameOf(uid_t uid) {
    const auto known = names_.find(uid);
    return known != names_.end() ? known->second : names_.emplace(uid, FindName(uid)).first->second;
}

std::optional<uid_t> UserDirectory::IdOf(const char* name) {
    std::optional<uid_t> id;
    const auto query = [name](auto... rest) { return getpwnam_r(name, rest...); };
    ThrowIfShort(support::LookUpUser(query, [&id](const passwd* found) {
        if (found != nullptr) {
            id = found->pw_uid;
        }
    }));
    return id;
}

}  // namespace vornplatform
