#include "cli/host/host_check.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "cli/host/host_file.h"
#include "cli/host/rights.h"
#include "cli/host/service_units.h"
#include "cli/host/volumes.h"
#include "support/folder.h"
#include "support/owner.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
#include "vorn/platform/share.h"
#include "vorn/platform/string_bundle.h"
#include "vorn/platform/string_list.h"

namespace cli {
namespace {

Finding ExamineRights() {
    const std::string missing = MissingRights(OwnRights());
    if (missing.empty()) {
        return {"rights", State::kOk, "every process can be examined", ""};
    }
    return {"rights", State::kMissing, missing,
            "run as root, or give CAP_SYS_PTRACE and CAP_DAC_READ_SEARCH"};
}

Finding ExamineControlGroups() {
    const std::string own = ReadHostFile("/proc/self/cgroup");
    if (HasServiceHierarchy(own)) {
        return {"control groups", State::kOk, "the hierarchy name=systemd is mounted", ""};
    }
    if (UnifiedPath(own)) {
        return {"control groups", State::kOk,
                "v2 alone: this command names services by their units; programs that link the "
                "library see the internal one",
                ""};
    }
    return {"control groups", State::kMissing,
            "neither name=systemd nor v2: every service shows as the internal one",
            "mount the control groups that systemd keeps its units in"};
}

Finding ExamineVolumes() {
    const std::vector<std::string> volumes = MountedVolumes();
    if (!volumes.empty()) {
        return {"volumes", State::kOk,
                fmt::format("{} mounted: {}", volumes.size(), fmt::join(volumes, ", ")), ""};
    }
    return {"volumes", State::kMissing, "no volume is mounted",
            "mount the data file systems on /volume1, /volume2 and so on"};
}

bool IsExecutable(const char* path) {
    return access(path, X_OK) == 0;
}

bool Exists(const char* path) {
    return access(path, F_OK) == 0;
}

/** What of that which makes shares is on this host. */
std::string ShareSources() {
    std::vector<std::string> sources;
    if (IsExecutable("/usr/bin/testparm") && Exists("/etc/samba/smb.conf")) {
        sources.emplace_back("Samba (testparm)");
    }
    if (Exists("/etc/exports") || Exists("/etc/exports.d")) {
        sources.emplace_back("NFS (/etc/exports)");
    }
    return sources.empty() ? "no file server is set up, so top-level folders of volumes count"
                           : fmt::format(
                                 "read from {}; where these export nothing below a volume, "
                                 "top-level folders count",
                                 fmt::join(sources, " and "));
}

/** Unit files below a folder whose section X-Vornalis names them. */
size_t CountNamedUnits(const char* folder) {
    size_t named = 0;
    const support::Descriptor opened = support::OpenFolder(folder);
    if (!opened) {
        return named;
    }
    support::VisitFolder(opened.Get(), [&](const dirent64& entry) {
        std::array<char, 1024> value{};
        const std::string path = std::string(folder) + '/' + entry.d_name;
        if (KLIBCFileGetSectionValue(path.c_str(), VORN_UNIT_SECTION, "Name", value.data(),
                                     static_cast<int>(value.size())) == 0) {
            ++named;
        }
        return true;
    });
    return named;
}

std::string Language() {
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return fmt::format("{}={}", name, value);
        }
    }
    return "no language is set";
}

Finding ExamineSsh(size_t sessions) {
    if (!IsExecutable("/usr/sbin/sshd")) {
        return {"SSH sessions", State::kOk, "no SSH server is installed", ""};
    }
    if (!Exists("/proc/self/loginuid")) {
        return {"SSH sessions", State::kWarning,
                fmt::format("{} found, but this kernel keeps no login ids", sessions),
                "use a kernel with CONFIG_AUDIT to see users of detached processes"};
    }
    return {"SSH sessions", State::kOk, fmt::format("{} found", sessions), ""};
}

Finding ExamineSmb() {
    if (!IsExecutable("/usr/sbin/smbd")) {
        return {"SMB sessions", State::kOk, "no SMB server is installed", ""};
    }
    if (!IsExecutable("/usr/bin/smbstatus")) {
        return {"SMB sessions", State::kWarning,
                "/usr/bin/smbstatus is not installed: users of SMB clients show as unknown",
                "install the package samba with its tools"};
    }
    return {"SMB sessions", State::kOk, "smbstatus tells users and machines", ""};
}

Finding ExamineShares() {
    KLIBC_SZLIST* list = KLIBCSzListAlloc(0);
    const int shares = VORNShareEnum(&list, VORN_SHARE_ALL);
    const support::Owner<KLIBC_SZLIST, KLIBCSzListFree> owner(list);
    if (shares < 0) {
        return {"shares", State::kMissing,
                fmt::format("shares can't be listed (error 0x{:04X})", KLIBCErrGet()),
                "see the system log for the reason"};
    }
    if (shares == 0) {
        return {"shares", State::kWarning, "no share found; " + ShareSources(),
                "export a folder, or list with --by volume"};
    }
    std::vector<std::string> names;
    constexpr int kShownNames = 10;
    for (int i = 0; i < std::min(shares, kShownNames); ++i) {
        names.emplace_back(KLIBCSzListGet(list, i));
    }
    return {"shares", State::kOk,
            fmt::format("{} found: {}{}; {}", shares, fmt::join(names, ", "),
                        shares > kShownNames ? ", ..." : "", ShareSources()),
            ""};
}

Finding ExamineUnits() {
    size_t named = 0;
    for (const char* folder : {"/usr/local/lib/systemd/system", "/usr/lib/systemd/system"}) {
        named += CountNamedUnits(folder);
    }
    if (named > 0) {
        return {"unit files", State::kOk, fmt::format("{} with a display name", named), ""};
    }
    return {"unit files", State::kMissing,
            "no unit file has a display name: every service shows as the internal one",
            "install the slices that come with vorn-openfiles"};
}

Finding ExamineTexts() {
    StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
    const std::string text = bundle.Text("internal_service", "");
    if (text.empty()) {
        return {"texts", State::kMissing, "no text bundle 'service'",
                "install the texts that come with vorn-openfiles"};
    }
    return {"texts", State::kOk,
            fmt::format("the internal service is called \"{}\" ({})", text, Language()), ""};
}

std::vector<Finding> ExamineConnections() {
    VORN_CURCONN* connections = nullptr;
    const int count = VORNCurConnGet(&connections);
    const support::Owner<VORN_CURCONN, std::free> owner(connections);
    if (count < 0) {
        return {{"sockets", State::kMissing,
                 fmt::format("client connections can't be listed (error 0x{:04X})", KLIBCErrGet()),
                 "see the system log for the reason"}};
    }
    const auto ssh = std::count_if(connections, connections + count, [](const VORN_CURCONN& each) {
        return each.type == VORN_CURCONN_SSH;
    });
    return {{"sockets", State::kOk, fmt::format("{} records of client connections", count), ""},
            ExamineSsh(static_cast<size_t>(ssh)),
            ExamineSmb()};
}

}  // namespace

std::string_view StateName(State state) {
    switch (state) {
        case State::kOk:
            return "ok";
        case State::kWarning:
            return "warning";
        case State::kMissing:
            break;
    }
    return "missing";
}

std::vector<Finding> ExamineHost() {
    std::vector<Finding> findings = {ExamineRights(), ExamineControlGroups(), ExamineVolumes(),
                                     ExamineShares(), ExamineUnits(),         ExamineTexts()};
    for (Finding& finding : ExamineConnections()) {
        findings.push_back(std::move(finding));
    }
    return findings;
}

}  // namespace cli
