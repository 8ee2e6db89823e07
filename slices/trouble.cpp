// SPDX-License-Identifier: MIT
#include "slices/trouble.h"

#include <systemd/sd-daemon.h>

#include <cstdio>
#include <cstdlib>

namespace slices {

void Troubles::Report(std::string_view kind, std::string_view text) {
    if (kinds_.emplace(kind).second) {
        LogError(text);
    }
}

void Troubles::Over(std::string_view kind) {
    const auto known = kinds_.find(kind);
    if (known != kinds_.end()) {
        kinds_.erase(known);
    }
}

void LogError(std::string_view text) {
    const bool isForJournal = std::getenv("JOURNAL_STREAM") != nullptr;
    std::fprintf(stderr, "%svorn-slices: %.*s\n", isForJournal ? SD_ERR : "",
                 static_cast<int>(text.size()), text.data());
}

}  // namespace slices
