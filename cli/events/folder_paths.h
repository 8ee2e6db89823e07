// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_FOLDER_PATHS_H
#define VORN_CLI_EVENTS_FOLDER_PATHS_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace cli {

/**
 * Paths of the folders of events, each found once. No descriptor is kept: it would keep the
 * volume from being unmounted.
 */
class FolderPaths {
public:
    /** Finds the path of FileEvent::folder; nothing where it can't be had. */
    using Find = std::function<std::optional<std::string>(std::string_view)>;

    FolderPaths(Find find, size_t most) : find_(std::move(find)), most_(most) {}

    /** Nothing for a folder that can't be opened any more, which is tried again at each question.
     */
    std::optional<std::string> PathOf(std::string_view folder);
    /** After a folder has got another name: those below it have other paths. */
    void Forget() { paths_.clear(); }

private:
    Find find_;
    size_t most_;
    std::unordered_map<std::string, std::string> paths_;
};

}  // namespace cli

#endif
