// SPDX-License-Identifier: MIT
#include "cli/question/holders/nfs_exports.h"

#include <fmt/format.h>

#include <cerrno>

#include "cli/text/escape.h"
#include "support/mount_info.h"
#include "support/text.h"

namespace cli {

// # Path Client(Flags) # IPs
// /volume1/photo	10.0.0.0/8(rw,no_root_squash,sync,wdelay,uuid=...)
std::vector<NfsExport> ParseNfsExports(std::string_view text) {
    std::vector<NfsExport> exports;
    while (!text.empty()) {
        std::string_view line = support::TakeLine(text);
        if (line.empty() || line.front() != '/') {
            continue;
        }
        NfsExport each;
        each.path = support::UnescapedOctal(support::TakeUntil(line, '\t'));
        each.clients = support::UnescapedOctal(support::TakeUntil(line, '('));
        exports.push_back(std::move(each));
    }
    return exports;
}

void NfsExports::Find(const Targets& targets, Wanted /*wanted*/, Holders& holders) {
    const auto text = ReadKernelFile(path_);
    if (!text) {
        // No server, no file.
        if (errno != ENOENT) {
            holders.lost.push_back(CannotRead(path_));
        }
        return;
    }
    for (const NfsExport& each : ParseNfsExports(*text)) {
        const auto named = PlaceOfPath(targets, each.path);
        if (!named || named->place.kind == Place::kUnknown) {
            holders.lost.push_back(fmt::format("the place of the NFS export {} can't be told",
                                               Escaped(each.path, true)));
        } else if (named->place.kind == Place::kInside) {
            Holder row;
            row.reason = Reason::kNfsExport;
            row.host = each.clients;
            row.files.push_back({-1, named->path, false});
            holders.rows.push_back(std::move(row));
        }
    }
}

}  // namespace cli
