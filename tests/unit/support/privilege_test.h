// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_PRIVILEGE_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_PRIVILEGE_TEST_H

#include <cerrno>
#include <string>
#include <vector>

#include "tests/unit/support/pipeline_test.h"

namespace unit {

/** The identity calls of a user 1000 of the group 100, and the mark of the enumeration. */
namespace identity_calls {

inline constexpr char kRaiseGroup[] = "setresgid(-1, 0, -1)";
inline constexpr char kRaiseUser[] = "setresuid(-1, 0, -1)";
inline constexpr char kEnumerate[] = "VORNShareEnum(list 4, 0x7F0F)";
inline constexpr char kRestoreGroup[] = "setresgid(-1, 100, -1)";
inline constexpr char kRestoreUser[] = "setresuid(-1, 1000, -1)";

}  // namespace identity_calls

/** The pipeline under raised identities. */
class PrivilegeTest : public PipelineTest {
protected:
    static constexpr int kAuthError = 35;

    void BeIdentity(uid_t user, gid_t group, const std::vector<int>& failures = {}) {
        libc.identities = {user, group, {}, 0};
        for (int call : failures) {
            libc.identities->failures[call] = EINVAL;
        }
    }
    std::vector<std::string> IdentityCalls() const {
        return journal.CallsOf({"setresgid", "setresuid", "VORNShareEnum"});
    }
    ::testing::AssertionResult EnterLogged() {
        return Logged(kAuthError, "%s:%d ERROR: ENTERCriticalSection", "filehandle_enum", 67);
    }
    ::testing::AssertionResult LeaveLogged() {
        return Logged(kAuthError, "%s:%d ERROR: LEAVECriticalSection", "filehandle_enum", 69);
    }
};

}  // namespace unit

#endif
