// SPDX-License-Identifier: MIT
#include "cli/question/holders/nfs_clients.h"

#include <fmt/format.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>

#include "cli/text/escape.h"
#include "support/folder.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

constexpr size_t kKeyDigits = 16;
constexpr size_t kStateDigits = 32;

/** What stands in quotes behind a key, as far as it is plain text. */
std::optional<std::string_view> Quoted(std::string_view text, std::string_view key) {
    if (!support::ConsumePrefix(text, key) || !support::ConsumePrefix(text, "\"")) {
        return std::nullopt;
    }
    const size_t end = text.find('"');
    return end == std::string_view::npos ? std::nullopt : std::optional(text.substr(0, end));
}

/** "[fd09:3::2]:799" and "10.9.2.2:764" without port and brackets. */
std::string HostOf(std::string_view address) {
    address = address.substr(0, address.rfind(':'));
    if (support::ConsumePrefix(address, "[")) {
        support::ConsumeSuffix(address, "]");
    }
    return std::string(address);
}

/** A state's number holds the client's own, which is random in part, byte by byte. */
std::string KeyOf(uint64_t clientId) {
    std::string key;
    for (size_t i = 0; i < sizeof(clientId); ++i) {
        key += fmt::format("{:02x}", reinterpret_cast<const unsigned char*>(&clientId)[i]);
    }
    return key;
}

/** The superblock as the kernel writes it: "fe:10:21", the inode number decimal. */
bool TakeFile(std::string_view text, NfsOpen& open) {
    const auto major = support::TakeNumber<unsigned>(text, 16);
    if (!major || !support::ConsumePrefix(text, ":")) {
        return false;
    }
    const auto minor = support::TakeNumber<unsigned>(text, 16);
    if (!minor || !support::ConsumePrefix(text, ":")) {
        return false;
    }
    const auto inode = support::ParseNumber<ino_t>(text);
    open.device = makedev(*major, *minor);
    open.inode = inode.value_or(0);
    return inode.has_value();
}

/** One record, up to the name in it. */
struct Record {
    enum { kNone, kFile, kOther } kind = kNone;
    NfsOpen open;
};

// - 0x00000001b485016b2bf0ae8301000000: { type: open, access: r-, deny: --,
//       superblock: "fe:10:21", filename: "nfs/ro", owner: "..." }
Record ParseRecord(std::string_view line, std::string_view stateKey) {
    Record record;
    if (!support::ConsumePrefix(line, "- 0x")) {
        return record;
    }
    const std::string_view number = support::TakeUntil(line, ':');
    if (number.size() != kStateDigits || number.substr(8, kKeyDigits) != stateKey ||
        !support::ConsumePrefix(line, " { type: ")) {
        return record;
    }
    const std::string_view type = support::TakeUntil(line, ',');
    record.kind = Record::kOther;
    if ((type != "open" && type != "deleg") || !support::ConsumePrefix(line, " access: ")) {
        return record;
    }
    for (const char letter : support::TakeUntil(line, ',')) {
        if (letter != '-') {
            record.open.access += letter;
        }
    }
    const size_t superblock = line.find("superblock: ");
    const auto file = superblock == std::string_view::npos
                          ? std::nullopt
                          : Quoted(line.substr(superblock), "superblock: ");
    record.kind = file && TakeFile(*file, record.open) ? Record::kFile : Record::kOther;
    return record;
}

/** Whether a record ends as the kernel ends one: a name that holds a newline doesn't. */
bool Ends(std::string_view line) {
    return support::EndsWith(line, "\" }");
}

void AddOnce(std::vector<NfsOpen>& opens, const NfsOpen& open) {
    const auto known = std::find_if(opens.begin(), opens.end(), [&](const NfsOpen& each) {
        return each.device == open.device && each.inode == open.inode;
    });
    if (known == opens.end()) {
        opens.push_back(open);
        return;
    }
    if (!open.doubtful) {
        known->doubtful = false;
        if (known->access != open.access && known->access != "rw") {
            known->access = known->access.empty() ? open.access : "rw";
        }
    }
}

}  // namespace

// clientid: 0x83aef02b6b0185b4
// address: "10.9.2.2:764"
std::optional<NfsClient> ParseNfsClient(std::string_view info) {
    NfsClient client;
    while (!info.empty()) {
        std::string_view line = support::TakeLine(info);
        if (support::ConsumePrefix(line, "clientid: 0x")) {
            const auto id = support::ParseNumber<uint64_t>(line, 16);
            client.stateKey = id ? KeyOf(*id) : "";
        } else if (const auto address = Quoted(line, "address: ")) {
            client.host = HostOf(*address);
            // What follows holds the client's own words.
            break;
        }
    }
    return client.host.empty() || client.stateKey.empty() ? std::nullopt
                                                          : std::optional(std::move(client));
}

std::vector<NfsOpen> ParseNfsStates(std::string_view states, std::string_view stateKey) {
    std::vector<NfsOpen> opens;
    bool doubtful = false;
    while (!states.empty()) {
        const std::string_view line = support::TakeLine(states);
        Record record = ParseRecord(line, stateKey);
        if (record.kind == Record::kFile) {
            record.open.doubtful = doubtful;
            AddOnce(opens, record.open);
        }
        doubtful = doubtful || record.kind == Record::kNone || !Ends(line);
    }
    return opens;
}

void NfsClients::Find(const Targets& targets, Wanted /*wanted*/, Holders& holders) {
    const support::Descriptor folder = support::OpenFolder(folder_.c_str());
    if (!folder) {
        if (errno != ENOENT) {
            holders.lost.push_back(CannotRead(folder_));
        }
        return;
    }
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        FindOf(fmt::format("{}/{}", folder_, entry.d_name), targets, holders);
        return true;
    });
    if (error != 0) {
        errno = error;
        holders.lost.push_back(CannotRead(folder_));
    }
}

void NfsClients::FindOf(const std::string& client, const Targets& targets, Holders& holders) const {
    const auto info = ReadKernelFile(client + "/info");
    const auto states = info ? ReadKernelFile(client + "/states") : std::nullopt;
    if (!states) {
        // One that has left meanwhile has nothing open any more.
        if (errno != ENOENT) {
            holders.lost.push_back(CannotRead(client));
        }
        return;
    }
    const auto who = ParseNfsClient(*info);
    if (!who) {
        holders.lost.push_back(fmt::format("{}/info has an unknown form", client));
        return;
    }
    AddOpens(*who, ParseNfsStates(*states, who->stateKey), targets, holders);
}

void NfsClients::AddOpens(const NfsClient& client, const std::vector<NfsOpen>& opens,
                          const Targets& targets, Holders& holders) {
    size_t unplaced = 0;
    size_t doubtful = 0;
    for (const NfsOpen& open : opens) {
        const Place place = targets.PlaceOnDevice(open.device, open.inode);
        if (place.kind == Place::kElsewhere) {
            continue;
        }
        if (open.doubtful || place.kind == Place::kUnknown) {
            ++(open.doubtful ? doubtful : unplaced);
            continue;
        }
        Holder row;
        row.reason = Reason::kNfsClient;
        row.host = client.host;
        row.access = open.access;
        row.files.push_back({-1, fmt::format("inode {}", open.inode), false});
        holders.rows.push_back(std::move(row));
    }
    const std::string host = Escaped(client.host, true);
    if (unplaced > 0) {
        holders.lost.push_back(
            fmt::format("files of the same file system that NFS client {} has "
                        "open, whose place can't be told: {}",
                        host, unplaced));
    }
    if (doubtful > 0) {
        holders.lost.push_back(
            fmt::format("files that NFS client {} has open, unless the name of "
                        "another one forges that: {}",
                        host, doubtful));
    }
}

}  // namespace cli
