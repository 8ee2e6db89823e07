#include "platform/linux/volumes/hidden_names.h"

#include <iterator>

#include "platform/linux/files/whole_file.h"
#include "platform/linux/support/lines.h"
#include "vorn/platform/error.h"

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
        const std::string_view line = Trim(TakeLine(text));
        if (!line.empty() && line.front() != '#') {
            names.emplace_back(line);
        }
    }
    return names;
}

int ReadHiddenNames(std::vector<std::string>& names) {
    std::string text;
    const int error = ReadTextFileOrThrow(kHiddenListPath, text);
    if (error == KLIBC_ERR_NOT_FOUND) {
        names.assign(std::begin(kBuiltIn), std::end(kBuiltIn));
    } else if (error == 0) {
        names = ParseHiddenList(text);
    }
    return error == KLIBC_ERR_NOT_FOUND ? 0 : error;
}

}  // namespace vornplatform
