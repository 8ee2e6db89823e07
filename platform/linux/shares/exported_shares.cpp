// SPDX-License-Identifier: MIT
#include "platform/linux/shares/exported_shares.h"

#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "platform/linux/files/folder_names.h"
#include "platform/linux/files/whole_file.h"
#include "platform/linux/shares/nfs_exports.h"
#include "platform/linux/shares/samba_dump.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/support/run_program.h"
#include "support/text.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "exported_shares";

constexpr char kTestparm[] = "/usr/bin/testparm";
constexpr char kSambaConfig[] = "/etc/samba/smb.conf";
constexpr char kSambaRegistry[] = "/var/lib/samba/registry.tdb";
constexpr char kExports[] = "/etc/exports";
constexpr char kExportsFolder[] = "/etc/exports.d";

/** 10,000 shares with 1 KB each. */
constexpr ProgramLimits kTestparmLimits = {std::chrono::seconds(2), 16 * 1024 * 1024};
constexpr size_t kMaxIncludes = 1000;

void NoteFailure(ExportedShares& result, int line, const std::string& text) {
    Log(LOG_WARNING, kSource, line, text);
    result.losses.push_back(text);
}

/** The names in a folder, sorted; none for a folder that this caller may not list. */
std::vector<std::string> NamesIn(const std::string& folder, ExportedShares& result) {
    try {
        return ReadFolderNames(folder, FolderEntries::kAll).value_or(std::vector<std::string>());
    } catch (const HostError& error) {
        PassOnShortage(error);
        NoteFailure(result, __LINE__, "Failed to list " + Escape(folder));
        return {};
    }
}

std::vector<std::string> VisibleNames(const std::string& folder, ExportedShares& result) {
    std::vector<std::string> names = NamesIn(folder, result);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const std::string& name) { return name.front() == '.'; }),
                names.end());
    return names;
}

/** Nothing for a file that can't be read, as Samba's own programs pass it over. */
std::optional<std::string> ReadSambaFile(const std::string& path) {
    try {
        return ReadWholeFile(path);
    } catch (const HostError& error) {
        PassOnShortage(error);
        return std::nullopt;
    }
}

/** Notes the configuration with what it includes. */
void WatchSambaConfig(FileWatch& watch) {
    watch.Add(kTestparm);
    watch.Add(kSambaRegistry);
    std::vector<std::string> files = {kSambaConfig};
    for (size_t i = 0; i < files.size() && i < kMaxIncludes; ++i) {
        watch.Add(files[i]);
        const auto text = ReadSambaFile(files[i]);
        for (std::string& included : IncludedFiles(text.value_or(std::string()))) {
            if (std::find(files.begin(), files.end(), included) == files.end()) {
                files.push_back(std::move(included));
            }
        }
    }
}

std::optional<SambaDump> AskTestparm(ExportedShares& result) {
    const ProgramResult answer = RunProgram({kTestparm, "-s"}, kTestparmLimits);
    // Its exit status is 1 also for a configuration that it merely finds fault with.
    if (answer.end != ProgramEnd::kExited && answer.end != ProgramEnd::kUnknown) {
        NoteFailure(result, __LINE__,
                    "testparm " + DescribeEnd(answer, kTestparmLimits) +
                        ", so Samba's shares are left out");
        return std::nullopt;
    }
    std::optional<SambaDump> dump = ParseSambaDump(answer.output);
    if (!dump) {
        NoteFailure(result, __LINE__,
                    "testparm's answer makes no sense, so Samba's shares are left out: " +
                        Escape(answer.output));
    }
    return dump;
}

void ReadUsershares(const std::string& folder, ExportedShares& result) {
    result.watch.Add(folder);
    for (const std::string& name : VisibleNames(folder, result)) {
        const std::string path = folder + "/" + name;
        result.watch.Add(path);
        const auto text = ReadSambaFile(path);
        if (auto share = text ? ParseUsershare(name, *text) : std::nullopt) {
            result.shares.push_back(std::move(*share));
        }
    }
}

/** Without a configuration Samba's tools may be there, but its server exports nothing. */
void ReadSambaShares(ExportedShares& result) {
    WatchSambaConfig(result.watch);
    if (access(kSambaConfig, F_OK) != 0) {
        return;
    }
    std::optional<SambaDump> dump = AskTestparm(result);
    if (!dump) {
        return;
    }
    std::move(dump->shares.begin(), dump->shares.end(), std::back_inserter(result.shares));
    if (!dump->usershareFolder.empty()) {
        ReadUsershares(dump->usershareFolder, result);
    }
}

/** One folder may be exported by several lines, to different clients. */
void ReadExportsFile(const std::string& path, std::unordered_set<std::string>& seen,
                     ExportedShares& result) {
    result.watch.Add(path);
    std::optional<std::string> text;
    try {
        text = ReadWholeFile(path);
    } catch (const HostError& error) {
        PassOnShortage(error);
        NoteFailure(result, __LINE__, "Failed to read " + Escape(path));
    }
    for (Share& share : ParseExports(text.value_or(std::string()))) {
        if (seen.insert(share.path).second) {
            result.shares.push_back(std::move(share));
        }
    }
}

bool IsExportsName(std::string_view name) {
    constexpr std::string_view kSuffix = ".exports";
    return name.size() > kSuffix.size() && support::EndsWith(name, kSuffix);
}

void ReadNfsShares(ExportedShares& result) {
    std::unordered_set<std::string> seen;
    ReadExportsFile(kExports, seen, result);
    result.watch.Add(kExportsFolder);
    for (const std::string& name : VisibleNames(kExportsFolder, result)) {
        if (IsExportsName(name)) {
            ReadExportsFile(std::string(kExportsFolder) + "/" + name, seen, result);
        }
    }
}

}  // namespace

ExportedShares ReadExportedShares() {
    ExportedShares result;
    ReadSambaShares(result);
    ReadNfsShares(result);
    return result;
}

}  // namespace vornplatform
