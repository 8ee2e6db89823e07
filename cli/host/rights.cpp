// SPDX-License-Identifier: MIT
#include "cli/host/rights.h"

#include <linux/capability.h>
#include <sys/auxv.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdint>

#include "support/process_text.h"
#include "support/read_file.h"

namespace cli {

Rights ParseRights(std::string_view status) {
    const uint64_t set = support::ParseCapabilities(status, "CapEff:").value_or(0);
    const auto has = [&](unsigned capability) { return support::HasCapability(set, capability); };
    return {has(CAP_SYS_PTRACE), has(CAP_DAC_READ_SEARCH) || has(CAP_DAC_OVERRIDE), has(CAP_KILL)};
}

Rights OwnRights() {
    return ParseRights(support::ReadFile("/proc/self/status"));
}

std::string MissingRights(const Rights& rights) {
    if (rights.Complete()) {
        return {};
    }
    if (geteuid() != 0) {
        return "not running as root: only files of this user's own processes are seen";
    }
    return "root lacks CAP_SYS_PTRACE or CAP_DAC_READ_SEARCH here: processes of other users may "
           "be missing";
}

namespace {

bool HasLentIdentity() {
    uid_t user = 0;
    uid_t effectiveUser = 0;
    uid_t savedUser = 0;
    gid_t group = 0;
    gid_t effectiveGroup = 0;
    gid_t savedGroup = 0;
    getresuid(&user, &effectiveUser, &savedUser);
    getresgid(&group, &effectiveGroup, &savedGroup);
    return user != effectiveUser || user != savedUser || group != effectiveGroup ||
           group != savedGroup;
}

/** AT_SECURE alone won't do: it also tells that a security module has changed the domain. */
bool HasLentCapabilities() {
    return getauxval(AT_SECURE) != 0 &&
           getxattr("/proc/self/exe", "security.capability", nullptr, 0) > 0;
}

}  // namespace

bool RunsWithLentRights() {
    return HasLentIdentity() || HasLentCapabilities();
}

}  // namespace cli
