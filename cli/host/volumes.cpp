// SPDX-License-Identifier: MIT
#include "cli/host/volumes.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "cli/text/escape.h"
#include "support/text.h"
#include "vorn/platform/volume.h"

namespace cli {

std::vector<std::string> MountedVolumes() {
    std::vector<std::string> volumes;
    // The same volumes that the library asks for. Walked to its end, the chain is the platform's.
    for (const VORN_MOUNT_VOL_INFO* volume = VORNMountVolAllEnum(0, 3, 2); volume != nullptr;
         volume = volume->pNext) {
        volumes.emplace_back(volume->szMountPath);
    }
    return volumes;
}

std::string_view LowestVolume(std::string_view path, const std::vector<std::string>& volumes) {
    std::string_view found;
    for (const std::string& volume : volumes) {
        if (volume.size() > found.size() && support::IsAtOrBelow(path, volume)) {
            found = volume;
        }
    }
    return found;
}

std::vector<std::string> ResolvedPaths(const std::vector<std::string>& paths,
                                       const std::vector<std::string>& volumes) {
    std::vector<std::string> resolved;
    for (const std::string& path : paths) {
        std::error_code error;
        // Absolute first: what doesn't exist would stay relative.
        const std::filesystem::path absolute = std::filesystem::absolute(path, error);
        std::string real = error ? "" : std::filesystem::weakly_canonical(absolute, error).string();
        if (error || real.empty()) {
            throw Failure(fmt::format("can't resolve '{}': {}", Escaped(path, true),
                                      error ? error.message() : "it is empty"));
        }
        if (real.size() > 1 && real.back() == '/') {
            real.pop_back();
        }
        if (std::none_of(volumes.begin(), volumes.end(), [&](const std::string& volume) {
                return support::IsAtOrBelow(real, volume);
            })) {
            throw PathElsewhere(fmt::format("'{}' is on no volume; the volumes are: {}",
                                            Escaped(real, true), fmt::join(volumes, ", ")));
        }
        resolved.push_back(std::move(real));
    }
    return resolved;
}

std::string FirstMissing(const std::vector<std::string>& paths) {
    const auto missing = std::find_if(paths.begin(), paths.end(), [](const std::string& path) {
        std::error_code error;
        return std::filesystem::status(path, error).type() == std::filesystem::file_type::not_found;
    });
    return missing == paths.end() ? std::string() : *missing;
}

}  // namespace cli
