// SPDX-License-Identifier: MIT
#include "platform/linux/findings/service_findings.h"

#include <linux/capability.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "platform/linux/processes/proc_file.h"
#include "support/process_text.h"
#include "support/text.h"

namespace vornplatform {
namespace {

constexpr char kGroups[] = "control groups";
constexpr char kServices[] = "services";
constexpr size_t kShown = 8;

/** Where vorn-slices mounts the hierarchy in which it names services, and how it is started. */
constexpr char kNamesMount[] = "/run/vorn/services";
constexpr const char* kNamerUnits[] = {"/etc/systemd/system/vorn-slices.service",
                                       "/usr/local/lib/systemd/system/vorn-slices.service",
                                       "/usr/lib/systemd/system/vorn-slices.service"};

constexpr std::string_view kNoNamed = "cgroup_no_v1=";
constexpr std::string_view kLegacyBoot = "systemd.unified_cgroup_hierarchy=";

std::string ReadText(const char* path) {
    constexpr size_t kLimit = size_t{1} << 20;
    return ReadProcFile(path, kLimit).value_or(std::string());
}

/** Values of a parameter on the kernel's command line; a later one goes before an earlier. */
std::string_view Parameter(std::string_view commandLine, std::string_view name) {
    std::string_view value;
    while (!commandLine.empty()) {
        std::string_view word = support::TakeUntil(commandLine, ' ');
        word = support::TrimRight(word);
        if (support::ConsumePrefix(word, name)) {
            value = word;
        }
    }
    return value;
}

/** "named" alone or among controllers. */
bool RefusesNames(const std::string& commandLine) {
    return support::HasPart(Parameter(commandLine, kNoNamed), "named");
}

bool AsksForLegacy(const std::string& commandLine) {
    const std::string_view value = Parameter(commandLine, kLegacyBoot);
    return value == "0" || value == "no" || value == "false" || value == "off";
}

bool IsLink(const char* path, std::string_view target) {
    char text[64];
    const ssize_t size = readlink(path, text, sizeof(text));
    return size > 0 && std::string_view(text, static_cast<size_t>(size)) == target;
}

/** A named hierarchy takes CAP_SYS_ADMIN over the host, in its own cgroup namespace. */
bool MayMountHierarchy() {
    const std::string status = ReadText("/proc/self/status");
    const auto set = support::ParseCapabilities(status, "CapEff:").value_or(0);
    return support::HasCapability(set, CAP_SYS_ADMIN) &&
           IsLink("/proc/self/ns/user", "user:[4026531837]") &&
           IsLink("/proc/self/ns/cgroup", "cgroup:[4026531835]");
}

/** What programs that link the library need on a host with v2 alone. */
std::string AdviceForPrograms(const GroupFacts& facts) {
    if (RefusesNames(facts.commandLine)) {
        return "for those programs boot without cgroup_no_v1=named, by which this kernel refuses a "
               "hierarchy of names, and install vorn-slices";
    }
    if (facts.namerInstalled) {
        return "for those programs start vorn-slices, which is installed: systemctl enable --now "
               "vorn-slices";
    }
    if (!facts.mayMount) {
        return "for those programs install vorn-slices on the host: from here no hierarchy can be "
               "mounted, as in a container without that right";
    }
    return "for those programs install vorn-slices";
}

std::string Processes(size_t count) {
    return std::to_string(count) + (count == 1 ? " process" : " processes");
}

/** "systemctl restart" takes names without their type. */
std::string_view UnitName(std::string_view service) {
    support::ConsumeSuffix(service, ".service");
    return service;
}

}  // namespace

GroupFacts ReadGroupFacts() {
    GroupFacts facts;
    facts.own = ParseProcessGroups(ReadText("/proc/self/cgroup"));
    facts.commandLine = ReadText("/proc/cmdline");
    facts.namesBeside =
        ReadText("/proc/self/mounts").find(std::string(" ") + kNamesMount + " cgroup ") !=
        std::string::npos;
    facts.namerInstalled = std::any_of(std::begin(kNamerUnits), std::end(kNamerUnits),
                                       [](const char* unit) { return access(unit, F_OK) == 0; });
    facts.mayMount = MayMountHierarchy();
    return facts;
}

Finding JudgeControlGroups(const GroupFacts& facts) {
    if (facts.own.named) {
        return {kGroups, VORN_FINDING_OK,
                facts.namesBeside
                    ? "v2, and beside it the hierarchy name=systemd that vorn-slices keeps"
                    : "the hierarchy name=systemd is mounted"};
    }
    if (!facts.own.unified) {
        return {kGroups, VORN_FINDING_MISSING,
                "neither name=systemd nor v2: every service shows as the internal one",
                "mount the control groups that systemd keeps its units in"};
    }
    std::string text =
        "v2 alone: this command names services by their units; programs that link the library see "
        "the internal one";
    if (AsksForLegacy(facts.commandLine)) {
        text +=
            ". systemd.unified_cgroup_hierarchy=0 is on the kernel's command line, and this "
            "release's systemd ignores it";
    }
    return {kGroups, VORN_FINDING_OK, text, AdviceForPrograms(facts)};
}

Findings JudgeNamesBeside(const std::vector<GroupedProcess>& processes, UnitSlices& slices) {
    size_t held = 0;
    std::map<std::string, size_t> unnamed;
    for (const GroupedProcess& process : processes) {
        const auto& groups = process.groups;
        const std::string slice(groups.unified ? SliceOf(*groups.unified) : "");
        if (!groups.named || !slices.NamesService(slice)) {
            continue;
        }
        ++held;
        if (SliceOf(*groups.named) != slice) {
            ++unnamed[slice];
        }
    }
    if (unnamed.empty()) {
        return {};
    }
    std::vector<std::string> said;
    size_t missing = 0;
    for (const auto& [slice, count] : unnamed) {
        missing += count;
        said.push_back(slice + " (" + Processes(count) + ")");
    }
    return {{kGroups, VORN_FINDING_WARNING,
             std::to_string(missing) + " of " + Processes(held) +
                 " that the slices hold have no name in name=systemd, so programs that link the "
                 "library see the internal service: " +
                 FirstFew(said, kShown),
             "see 'systemctl status vorn-slices'"}};
}

Findings JudgeServices(const std::vector<GroupedProcess>& processes, UnitSlices& slices) {
    std::map<std::string, size_t> inside;
    std::map<std::string, std::string> outside;
    for (const GroupedProcess& process : processes) {
        const std::string slice(SliceOf(process.Path()));
        if (slices.NamesService(slice)) {
            ++inside[slice];
        }
        const std::string service(ServiceOf(process.Path()));
        const std::string& wanted = service.empty() ? service : slices.Of(service);
        if (slices.NamesService(wanted) && wanted != slice) {
            outside.emplace(service, slice + ", not in " + wanted);
        }
    }
    std::vector<std::string> said;
    for (const auto& [slice, count] : inside) {
        said.push_back(slice + " (" + Processes(count) + ")");
    }
    Findings findings = {{kServices, VORN_FINDING_OK,
                          said.empty() ? "nothing runs in a slice that names a service"
                                       : "in slices of their own: " + FirstFew(said, kShown)}};
    std::vector<std::string> strays;
    std::string restart = "systemctl restart";
    for (const auto& [service, where] : outside) {
        strays.push_back(service + " runs in " + where);
        restart.append(" ").append(UnitName(service));
    }
    if (!strays.empty()) {
        findings.push_back({kServices, VORN_FINDING_WARNING,
                            "outside of the slice that names it: " + FirstFew(strays, kShown),
                            restart + ", at a moment that suits its clients"});
    }
    return findings;
}

Findings JudgeSessions(const std::vector<GroupedProcess>& processes,
                       const std::set<pid_t>& clients) {
    std::set<std::string> moved;
    for (const GroupedProcess& process : processes) {
        if (process.groups.named && clients.count(process.pid) != 0) {
            moved.emplace(SessionScopeOf(*process.groups.named));
        }
    }
    moved.erase("");
    if (moved.empty()) {
        return {};
    }
    return {{"SSH sessions", VORN_FINDING_WARNING,
             std::to_string(moved.size()) + (moved.size() == 1 ? " login was" : " logins were") +
                 " moved to user.slice by the login manager, so their files show as the internal "
                 "service",
             "boot with control groups v2, without systemd.unified_cgroup_hierarchy=0: there this "
             "command names them, and vorn-slices does for programs that link the library"}};
}

Findings FindServices(const std::set<pid_t>& clients) {
    const std::vector<GroupedProcess> processes = ReadGroupedProcesses();
    const GroupFacts facts = ReadGroupFacts();
    UnitSlices slices;
    Findings findings = {JudgeControlGroups(facts)};
    const auto append = [&findings](Findings more) {
        std::move(more.begin(), more.end(), std::back_inserter(findings));
    };
    if (facts.namesBeside) {
        append(JudgeNamesBeside(processes, slices));
    }
    append(JudgeServices(processes, slices));
    append(JudgeSessions(processes, clients));
    return findings;
}

}  // namespace vornplatform
