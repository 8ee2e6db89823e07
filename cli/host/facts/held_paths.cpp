// SPDX-License-Identifier: MIT
#include "cli/host/facts/held_paths.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <string_view>

#include "support/folder.h"
#include "support/numbers.h"

namespace cli {
namespace {

/** Gives nothing where a link can't be read: a list that lacks one proves nothing. */
std::optional<std::set<std::string>> PathsIn(const support::Descriptor& folder) {
    std::set<std::string> paths;
    std::array<char, PATH_MAX> target{};
    bool all = true;
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        const ssize_t length = readlinkat(folder.Get(), entry.d_name, target.data(), target.size());
        // Standard input is in no list.
        if (length > 0 && std::string_view(entry.d_name) != "0") {
            paths.emplace(target.data(), static_cast<size_t>(length));
        }
        all = length >= 0 || errno == ENOENT;
        return all;
    });
    return all && error == 0 ? std::optional(std::move(paths)) : std::nullopt;
}

}  // namespace

HeldPaths::Process HeldPaths::Read(const std::string& pid) {
    Process process;
    const auto facts = ProcessFacts::Of(pid);
    if (!facts) {
        const pid_t number = support::ParseNumber<pid_t>(pid).value_or(0);
        process.ended = number > 0 && kill(number, 0) != 0 && errno == ESRCH;
        return process;
    }
    process.start = facts->Start();
    const support::Descriptor folder = support::OpenFolder(("/proc/" + pid + "/fd").c_str());
    if (folder) {
        process.paths = PathsIn(folder);
    }
    return process;
}

bool HeldPaths::MayHold(const std::string& pid, BootTicks start, const std::string& path) {
    const auto [place, isNew] = processes_.try_emplace(pid);
    Process& process = place->second;
    if (isNew) {
        process = Read(pid);
    }
    const bool isAnother = start != 0 && process.start != 0 && start != process.start;
    return !process.ended && !isAnother && (!process.paths || process.paths->count(path) != 0);
}

}  // namespace cli
