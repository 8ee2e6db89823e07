// SPDX-License-Identifier: MIT
#include "cli/host/facts/facts_text.h"

#include <fcntl.h>

#include "support/numbers.h"
#include "support/text.h"
#include "vorn/platform/file.h"

namespace cli {
namespace {

/** The path in the hierarchy name=systemd or, where there is none, in that of groups v2. */
std::string_view PathOfUnits(std::string_view cgroup) {
    std::string_view unified;
    while (!cgroup.empty()) {
        std::string_view line = support::TakeLine(cgroup);
        const std::string_view number = support::TakeUntil(line, ':');
        if (support::ConsumePrefix(line, VORN_UNIT_HIERARCHY ":")) {
            return line;
        }
        if (number == "0" && support::ConsumePrefix(line, ":")) {
            unified = line;
        }
    }
    return unified;
}

bool NamesUnit(std::string_view component) {
    for (const char* type : {".service", ".scope", ".socket", ".mount", ".swap"}) {
        if (support::EndsWith(component, type)) {
            return true;
        }
    }
    return false;
}

}  // namespace

// pos:\t0
// flags:\t02100001
// mnt_id:\t29
// lock:\t1: POSIX  ADVISORY  WRITE 29024 08:01:1234 0 EOF
std::optional<OpenState> ParseOpenState(std::string_view fdinfo) {
    OpenState state;
    std::optional<int> flags;
    while (!fdinfo.empty()) {
        std::string_view line = support::TakeLine(fdinfo);
        if (support::ConsumePrefix(line, "flags:\t")) {
            flags = support::ParseNumber<int>(line, 8);
        } else if (support::ConsumePrefix(line, "lock:\t")) {
            if (auto lock = ParseKernelLock(line)) {
                state.locks.push_back(std::move(*lock));
            }
        }
    }
    if (!flags) {
        return std::nullopt;
    }
    const int access = *flags & O_ACCMODE;
    const bool opened = (*flags & O_PATH) == 0;
    state.reads = opened && (access == O_RDONLY || access == O_RDWR);
    state.writes = opened && (access == O_WRONLY || access == O_RDWR);
    state.appends = state.writes && (*flags & O_APPEND) != 0;
    return state;
}

// mnt_id:\t29
// ino:\t35
std::pair<std::string_view, std::string_view> FileIn(std::string_view fdinfo) {
    std::string_view mount;
    std::string_view inode;
    while (!fdinfo.empty()) {
        std::string_view line = support::TakeLine(fdinfo);
        if (support::ConsumePrefix(line, "mnt_id:\t")) {
            mount = line;
        } else if (support::ConsumePrefix(line, "ino:\t")) {
            inode = line;
        }
    }
    return {mount, inode};
}

std::string ModeName(const OpenState& state) {
    std::string name;
    name += state.reads ? "r" : "";
    name += state.writes ? "w" : "";
    name += state.appends ? "a" : "";
    return name.empty() ? "-" : name;
}

// 1:name=systemd:/SMBService.slice/smbd.service
// 0::/user.slice/user-1000.slice/user@1000.service/app.slice/editor.scope
std::string UnitOf(std::string_view cgroup) {
    std::string_view path = PathOfUnits(cgroup);
    support::ConsumePrefix(path, "/");
    std::string_view component = support::TakeUntil(path, '/');
    while (support::EndsWith(component, ".slice")) {
        component = support::TakeUntil(path, '/');
    }
    // A name that would be taken for a file of the kernel's own has this before it.
    support::ConsumePrefix(component, "_");
    return std::string(NamesUnit(component) ? component : std::string_view());
}

}  // namespace cli
