// SPDX-License-Identifier: MIT
#include "cli/question/holders/swap_files.h"

#include <fmt/format.h>

#include <cerrno>

#include "cli/text/escape.h"
#include "support/mount_info.h"
#include "support/text.h"

namespace cli {

// Filename				Type		Size		Used		Priority
// /volume3/swap                           file		16368		0		-2
std::vector<std::string> ParseSwapFiles(std::string_view text) {
    std::vector<std::string> files;
    support::TakeLine(text);
    while (!text.empty()) {
        std::string_view line = support::TakeLine(text);
        const std::string_view name = support::TakeUntil(line, ' ');
        line = support::TrimLeft(line);
        if (support::TakeUntil(line, '\t') == "file") {
            files.push_back(support::UnescapedOctal(name));
        }
    }
    return files;
}

void SwapFiles::Find(const Targets& targets, Wanted /*wanted*/, Holders& holders) {
    const auto text = ReadKernelFile(path_);
    if (!text) {
        // A kernel without swap has no such file.
        if (errno != ENOENT) {
            holders.lost.push_back(CannotRead(path_));
        }
        return;
    }
    for (const std::string& name : ParseSwapFiles(*text)) {
        const auto named = PlaceOfPath(targets, name);
        if (!named || named->place.kind == Place::kUnknown) {
            holders.lost.push_back(
                fmt::format("the place of the swap file {} can't be told", Escaped(name, true)));
        } else if (named->place.kind == Place::kInside) {
            Holder row;
            row.reason = Reason::kSwap;
            row.files.push_back({-1, named->path, false});
            holders.rows.push_back(std::move(row));
        }
    }
}

}  // namespace cli
