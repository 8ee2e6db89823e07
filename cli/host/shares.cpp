// SPDX-License-Identifier: MIT
#include "cli/host/shares.h"

#include <algorithm>

#include "support/owner.h"
#include "support/text.h"
#include "vorn/platform/share.h"
#include "vorn/platform/string_list.h"

namespace cli {
namespace {

/** As the library asks for them; none where they can't be had, which the library then tells. */
std::vector<std::string> SharePaths() {
    std::vector<std::string> paths;
    KLIBC_SZLIST* names = KLIBCSzListAlloc(512);
    const int count = VORNShareEnum(&names, VORN_SHARE_ALL);
    const support::Owner<KLIBC_SZLIST, KLIBCSzListFree> owner(names);
    VORN_SHARE* share = nullptr;
    for (int i = 0; i < count; ++i) {
        if (VORNShareGet(KLIBCSzListGet(names, i), &share) == 0) {
            paths.emplace_back(share->szPath);
        }
    }
    return paths;
}

}  // namespace

std::string FirstOutsideShares(const std::vector<std::string>& paths) {
    if (paths.empty()) {
        return {};
    }
    const std::vector<std::string> shares = SharePaths();
    const auto outside = std::find_if(paths.begin(), paths.end(), [&](const std::string& path) {
        return std::none_of(shares.begin(), shares.end(), [&](const std::string& share) {
            return support::IsAtOrBelow(path, share) || support::IsAtOrBelow(share, path);
        });
    });
    return outside == paths.end() ? std::string() : *outside;
}

}  // namespace cli
