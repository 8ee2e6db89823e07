// SPDX-License-Identifier: MIT
#include "cli/host/kernel/unavailable.h"

#include <fmt/format.h>
#include <linux/capability.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "support/process_text.h"
#include "support/read_file.h"
#include "support/text.h"

namespace cli {
namespace {

// NSpid:	27061	1
/** /proc names a process in its own PID namespace and in those below, down to the process's own. */
bool IsProcOfOwnNamespace(std::string_view status) {
    const std::string_view pids = support::StatusValue(status, "NSpid:");
    return !pids.empty() && pids.find_first_of(support::kWhiteSpace) == std::string_view::npos;
}

bool MayLoad(std::string_view status) {
    const uint64_t set = support::ParseCapabilities(status, "CapEff:").value_or(0);
    const auto has = [&](unsigned capability) { return support::HasCapability(set, capability); };
    return has(CAP_SYS_ADMIN) || (has(CAP_BPF) && has(CAP_PERFMON));
}

//          0          0 4294967295
bool HasAllUsers(std::string_view users) {
    const std::string_view line = support::TakeLine(users);
    return users.empty() && support::EndsWith(line, " 4294967295");
}

}  // namespace

KernelFacts OwnKernelFacts() {
    KernelFacts facts;
    facts.status = support::ReadFile("/proc/self/status");
    facts.users = support::ReadFile("/proc/self/uid_map");
    facts.lockdown = support::ReadFile("/sys/kernel/security/lockdown");
    facts.typeInformation =
        access("/sys/kernel/btf/vmlinux", F_OK) == 0 || access("/sys/kernel", F_OK) != 0;
    utsname names{};
    if (uname(&names) == 0) {
        facts.release = names.release;
    }
    return facts;
}

std::string WhyNotAsked(const KernelFacts& facts) {
    if (!IsProcOfOwnNamespace(facts.status)) {
        return "/proc is not that of this command's own PID namespace";
    }
    if (!MayLoad(facts.status)) {
        return "it takes CAP_BPF and CAP_PERFMON, as root has them";
    }
    return {};
}

std::string WhyRefused(int error, const KernelFacts& facts) {
    if (error == ENOTSUP) {
        return "this program was built without it";
    }
    if (facts.lockdown.find("[confidentiality]") != std::string::npos) {
        return "the kernel is locked down to keep its memory confidential";
    }
    if (error == EPERM && !HasAllUsers(facts.users)) {
        return "it can't be had in a user namespace";
    }
    if (error == EPERM && support::StatusValue(facts.status, "Seccomp:") != "0") {
        return "a seccomp filter keeps bpf() from this process";
    }
    if (!facts.typeInformation) {
        return "this kernel has no type information (CONFIG_DEBUG_INFO_BTF)";
    }
    return fmt::format("kernel {} refuses it ({}); 5.17 or newer is needed, with type information",
                       facts.release, std::strerror(error));
}

}  // namespace cli
