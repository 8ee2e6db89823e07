// SPDX-License-Identifier: MIT
// The text of /proc/self/mounts.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/text_input.h"
#include "platform/linux/volumes/volume_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> copy(data, data + size);
    const std::unique_ptr<FILE, decltype(&std::fclose)> table(
        fmemopen(copy.data(), copy.size(), "r"), std::fclose);
    if (!table) {
        return 0;
    }
    std::vector<std::string> volumes = vornplatform::SelectVolumes(table.get());
    Must(std::all_of(volumes.begin(), volumes.end(), vornplatform::IsVolume));
    std::sort(volumes.begin(), volumes.end());
    Must(std::adjacent_find(volumes.begin(), volumes.end()) == volumes.end());
    return 0;
}
