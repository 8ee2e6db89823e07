// SPDX-License-Identifier: MIT
#include "platform/linux/volumes/hidden_list.h"

#include <iterator>

#include "platform/linux/files/whole_file.h"
#include "support/text.h"

namespace vornplatform {
namespace {

/** What file systems, file servers and their clients keep out of sight. */
constexpr const char* kBuiltIn[] = {
    "/lost+found",
    "/.snapshot",
    "/.snapshots",
    "/.zfs",
    "/.recycle",
    "/.Trash-",
    "/.Trashes",
    "/.AppleDouble",
    "/.AppleDB",
    "/.AppleDesktop",
    "/.TemporaryItems",
    "/.DS_Store",
    "/.fseventsd",
    "/.Spotlight-V100",
    "/Network Trash Folder",
    "/$RECYCLE.BIN",
    "/System Volume Information",
};

}  // namespace

std::vector<std::string> ParseHiddenList(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        const std::string_view line = support::Trim(support::TakeLine(text));
        if (!line.empty() && line.front() != '#') {
            names.emplace_back(line);
        }
    }
    return names;
}

std::vector<std::string> ReadHiddenList() {
    const auto text = ReadWholeFile(kHiddenListPath);
    return text ? ParseHiddenList(*text)
                : std::vector<std::string>(std::begin(kBuiltIn), std::end(kBuiltIn));
}

}  // namespace vornplatform
