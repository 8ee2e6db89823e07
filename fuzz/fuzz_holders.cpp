// SPDX-License-Identifier: MIT
// What the kernel tells of mounts, mappings, swap and its NFS server, with names that are
// anybody's.

#include "cli/question/holders/memory_map.h"
#include "cli/question/holders/mount_table.h"
#include "cli/question/holders/nfs_clients.h"
#include "cli/question/holders/nfs_exports.h"
#include "cli/question/holders/nfs_locks.h"
#include "cli/question/holders/process_facts.h"
#include "cli/question/holders/swap_files.h"
#include "fuzz/text_input.h"
#include "support/text.h"

namespace {

void CheckMounts(std::string_view text) {
    cli::MountTable table;
    table.Add(text, "/srv", true);
    for (const cli::Mount& mount : table.All()) {
        Must(cli::PathInside(mount, mount.point) == mount.root);
        Must(table.Find(mount.id) != nullptr);
    }
}

void CheckNfs(std::string_view text) {
    if (const auto client = cli::ParseNfsClient(text)) {
        Must(!client->host.empty() && client->stateKey.size() == 16);
    }
    for (const cli::NfsOpen& open : cli::ParseNfsStates(text, "b485016b2bf0ae83")) {
        // Without the client's number there is no record.
        Must(text.find("b485016b2bf0ae83") != std::string_view::npos);
        Must(!open.doubtful || text.find('\n') != std::string_view::npos);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = TextOf(data, size);
    CheckMounts(text);
    CheckNfs(text);
    cli::ParseSwapFiles(text);
    cli::ParseNfsExports(text);
    cli::ParseLocks(text);
    cli::HasRegisteredFiles(text);
    for (std::string_view rest = text; !rest.empty();) {
        cli::ParseMapped(support::TakeLine(rest));
    }
    return 0;
}
