// SPDX-License-Identifier: MIT
#include "cli/host/descriptor_links.h"

#include <fcntl.h>
#include <unistd.h>

#include "support/text.h"

namespace cli {
namespace {

thread_local DescriptorLinks* links = nullptr;

/** "/proc/<pid>/fd/" of such a folder's link; empty for another link. */
std::string_view FolderOf(std::string_view link) {
    const std::string_view folder = link.substr(0, link.rfind('/') + 1);
    return support::StartsWith(folder, "/proc/") && support::EndsWith(folder, "/fd/")
               ? folder
               : std::string_view();
}

}  // namespace

DescriptorLinks::DescriptorLinks() {
    links = this;
}

DescriptorLinks::~DescriptorLinks() {
    links = nullptr;
}

void DescriptorLinks::Enter(std::string_view folder) {
    if (name_ != folder) {
        name_ = folder;
        folder_ = support::Descriptor(open(name_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
}

ssize_t DescriptorLinks::Read(const char* link, char* buffer, size_t size) {
    const std::string_view folder = FolderOf(link);
    if (links == nullptr || folder.empty()) {
        return readlinkat(AT_FDCWD, link, buffer, size);
    }
    links->Enter(folder);
    return links->folder_ ? readlinkat(links->folder_.Get(), link + folder.size(), buffer, size)
                          : readlinkat(AT_FDCWD, link, buffer, size);
}

}  // namespace cli
