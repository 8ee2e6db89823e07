// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FACTS_USER_NAMES_H
#define VORN_CLI_HOST_FACTS_USER_NAMES_H

#include <sys/types.h>

#include <string>
#include <unordered_map>

#include "support/users.h"

namespace cli {

/** Names of users by id, each asked for once; the number where there is none to be had. */
class UserNames {
public:
    const std::string& Of(uid_t uid) {
        const auto [known, isNew] = names_.try_emplace(uid);
        if (isNew) {
            int error = 0;
            known->second = support::UserName(uid, error);
        }
        return known->second;
    }

private:
    std::unordered_map<uid_t, std::string> names_;
};

}  // namespace cli

#endif
