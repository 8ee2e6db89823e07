// SPDX-License-Identifier: MIT
#include "cli/host/deleted.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>

#include "support/folder.h"
#include "support/text.h"

namespace cli {
namespace {

bool IsMarked(std::string_view path) {
    return WithoutDeletedMark(path).size() != path.size();
}

}  // namespace

std::string_view WithoutDeletedMark(std::string_view path) {
    if (path.size() > kDeletedMark.size()) {
        support::ConsumeSuffix(path, kDeletedMark);
    }
    return path;
}

bool DeletedFiles::Contains(std::string_view path, const std::string& pid) {
    if (!IsMarked(path)) {
        return false;
    }
    const std::string fullPath(path);
    struct stat named {};
    if (lstat(fullPath.c_str(), &named) != 0) {
        return true;
    }
    const auto [begin, end] = MarkedTargets(pid).equal_range(fullPath);
    return std::any_of(begin, end, [&](const auto& target) {
        return target.second != Inode(named.st_dev, named.st_ino);
    });
}

const DeletedFiles::Targets& DeletedFiles::MarkedTargets(const std::string& pid) {
    const auto [entry, isNew] = targets_.try_emplace(pid);
    if (!isNew) {
        return entry->second;
    }
    const support::Descriptor folder = support::OpenFolder(("/proc/" + pid + "/fd").c_str());
    if (!folder) {
        return entry->second;
    }
    std::array<char, PATH_MAX> target{};
    // A process that ends meanwhile leaves what was seen until then.
    support::VisitFolder(folder.Get(), [&, &targets = entry->second](const dirent64& descriptor) {
        const ssize_t length =
            readlinkat(folder.Get(), descriptor.d_name, target.data(), target.size());
        struct stat held {};
        if (length > 0 && IsMarked({target.data(), static_cast<size_t>(length)}) &&
            fstatat(folder.Get(), descriptor.d_name, &held, 0) == 0) {
            targets.emplace(std::string(target.data(), static_cast<size_t>(length)),
                            Inode(held.st_dev, held.st_ino));
        }
        return true;
    });
    return entry->second;
}

}  // namespace cli
