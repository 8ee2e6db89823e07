// SPDX-License-Identifier: MIT
#include "platform/linux/findings/host_findings.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "platform/linux/findings/answer_findings.h"
#include "platform/linux/findings/client_findings.h"
#include "platform/linux/findings/service_findings.h"
#include "platform/linux/shares/share_sources.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/volumes/volume_table.h"

namespace vornplatform {
namespace {

constexpr char kShares[] = "shares";
constexpr size_t kShownShares = 10;

/** The losses of some sources as findings. */
Findings LossesOf(std::initializer_list<Source> sources) {
    Findings findings;
    for (const LostSource& loss : LostSources()) {
        if (std::find(sources.begin(), sources.end(), loss.source) != sources.end()) {
            findings.push_back(LossFinding(loss));
        }
    }
    return findings;
}

/** Asks a source whose failure is remembered as a loss. */
template <typename Ask>
auto Asked(const Ask& ask) -> decltype(ask()) {
    try {
        return ask();
    } catch (const HostError& error) {
        PassOnShortage(error);
        return {};
    }
}

Findings FindVolumes() {
    std::vector<std::string> volumes = Asked([] { return ReadVolumes(); });
    Findings findings = LossesOf({Source::kVolumes});
    if (!findings.empty()) {
        return findings;
    }
    if (volumes.empty()) {
        return {{"volumes", VORN_FINDING_MISSING, "no volume is mounted",
                 "mount the data file systems on /volume1, /volume2 and so on"}};
    }
    OrderVolumes(volumes);
    return {{"volumes", VORN_FINDING_OK,
             std::to_string(volumes.size()) + " mounted: " + FirstFew(volumes, volumes.size())}};
}

/** Who was asked for shares, as the shares themselves tell. */
std::string WhoExports(const std::vector<Share>& shares) {
    std::set<std::string> servers;
    for (const Share& share : shares) {
        servers.insert(share.server);
    }
    if (servers.count("") != 0) {
        return "no file server exports a folder of a volume, so their top-level folders count";
    }
    return "exported by " + FirstFew({servers.begin(), servers.end()}, servers.size());
}

/** The shares that are known, as far as the sources go. */
Finding DescribeTable(const ShareTable& table, bool isWhole) {
    const std::vector<std::string> shown = DescribeShares(table.Shares());
    if (shown.empty()) {
        return {kShares, VORN_FINDING_WARNING,
                "no share found; no file server exports a folder of a volume, and volumes have no "
                "top-level folder that would count",
                "export a folder, or list with --by volume"};
    }
    return {kShares, isWhole ? VORN_FINDING_OK : VORN_FINDING_WARNING,
            std::to_string(shown.size()) + " found: " + FirstFew(shown, kShownShares) + "; " +
                (isWhole ? WhoExports(table.Shares()) : "others may be missing")};
}

Findings FindShares() {
    const auto table = Asked([] { return CurrentShares(); });
    const Findings losses = LossesOf({Source::kExportedShares, Source::kShareFolders});
    Findings findings;
    if (table) {
        findings.push_back(DescribeTable(*table, losses.empty()));
    } else if (losses.empty()) {
        findings.push_back({kShares, VORN_FINDING_MISSING, "shares can't be listed",
                            "see the system log for the reason", true});
    }
    findings.insert(findings.end(), losses.begin(), losses.end());
    return findings;
}

Findings FindSight() {
    Findings findings = FindWhatIsOutOfSight();
    const bool sees = std::none_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.subject == "processes";
    });
    if (sees) {
        findings.insert(findings.begin(),
                        {"processes", VORN_FINDING_OK, "every process can be examined"});
    }
    return findings;
}

}  // namespace

void OrderVolumes(std::vector<std::string>& volumes) {
    std::sort(volumes.begin(), volumes.end(), [](const std::string& a, const std::string& b) {
        return strverscmp(a.c_str(), b.c_str()) < 0;
    });
}

std::vector<std::string> DescribeShares(const std::vector<Share>& shares) {
    std::map<std::string, std::set<std::string>> serversOf;
    std::vector<const Share*> folders;
    for (const Share& share : shares) {
        auto& servers = serversOf[share.path];
        if (servers.empty()) {
            folders.push_back(&share);
        }
        servers.insert(share.server);
    }
    std::vector<std::string> described;
    for (const Share* share : folders) {
        const std::set<std::string>& servers = serversOf[share->path];
        const std::string who = FirstFew({servers.begin(), servers.end()}, servers.size());
        described.push_back(who.empty() ? share->name : share->name + " (" + who + ")");
    }
    return described;
}

Findings FindingsOfHost() {
    const ClientFacts clients = AskForClients();
    Findings all;
    for (Findings findings : {FindSight(), FindServices(clients.ssh), FindVolumes(), FindShares(),
                              FindClients(clients)}) {
        std::move(findings.begin(), findings.end(), std::back_inserter(all));
    }
    return all;
}

}  // namespace vornplatform
