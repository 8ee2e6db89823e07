// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SHARES_SHARE_TABLE_H
#define VORN_PLATFORM_LINUX_SHARES_SHARE_TABLE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vornplatform {

struct Share {
    std::string name;
    std::string path;
    std::string server = {}; /**< who exports it, such as "NFS"; empty for a mere folder */
};

/**
 * The path of a share as a configuration writes it, without slashes at its end. Empty for one that
 * is not absolute, depends on the client ("%") or can't be a path.
 */
std::string WrittenPath(std::string_view path);

/**
 * The path of a share in the form in which the kernel names files under it, as far as the text
 * tells: absolute, without empty, "." and ".." components and trailing slashes. Empty for a path
 * that lies in no volume, or that WrittenPath refuses.
 */
std::string SharePath(std::string_view path);

/** Shares in the order of their sources, with distinct names, to be looked up by name. */
class ShareTable {
public:
    ShareTable() = default;
    /** Shares whose name is taken already get a number: "photo", "photo (2)", "photo (3)". */
    explicit ShareTable(std::vector<Share> shares);

    const std::vector<Share>& Shares() const { return shares_; }
    /** Null when there is no share of that name. */
    const Share* Find(const std::string& name) const;

private:
    std::vector<Share> shares_;
    std::unordered_map<std::string, size_t> indexes_;
};

}  // namespace vornplatform

#endif
