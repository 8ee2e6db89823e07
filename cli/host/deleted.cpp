#include "cli/host/deleted.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <filesystem>

namespace cli {
namespace {

bool IsMarked(std::string_view path) {
    return WithoutDeletedMark(path).size() != path.size();
}

}  // namespace

std::string_view WithoutDeletedMark(std::string_view path) {
    if (path.size() > kDeletedMark.size() &&
        path.substr(path.size() - kDeletedMark.size()) == kDeletedMark) {
        path.remove_suffix(kDeletedMark.size());
    }
    return path;
}

bool DeletedFiles::Contains(const std::string& fullPath, const std::string& pid) {
    if (!IsMarked(fullPath)) {
        return false;
    }
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
    std::error_code error;
    std::filesystem::directory_iterator descriptors("/proc/" + pid + "/fd", error);
    std::array<char, PATH_MAX> buffer{};
    for (; !error && descriptors != std::filesystem::directory_iterator();
         descriptors.increment(error)) {
        const char* link = descriptors->path().c_str();
        const ssize_t length = readlink(link, buffer.data(), buffer.size());
        struct stat held {};
        if (length > 0 && IsMarked({buffer.data(), static_cast<size_t>(length)}) &&
            stat(link, &held) == 0) {
            entry->second.emplace(std::string(buffer.data(), static_cast<size_t>(length)),
                                  Inode(held.st_dev, held.st_ino));
        }
    }
    return entry->second;
}

}  // namespace cli
