// SPDX-License-Identifier: MIT
#include "platform/linux/files/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/support/host_error.h"
#include "support/descriptor.h"
#include "support/read_all.h"

namespace vornplatform {
namespace {

/** Nothing when there is no such file. */
std::optional<support::Descriptor> Open(const std::string& path) {
    support::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file) {
        return file;
    }
    if (!IsNothingThere(errno)) {
        throw HostError(errno);
    }
    return std::nullopt;
}

/** Before anything is read: devices may wait, or never end. */
void RequireRegularFile(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0) {
        throw HostError(errno);
    }
    if (!S_ISREG(status.st_mode) || status.st_size > static_cast<off_t>(kWholeFileLimit)) {
        throw HostError(EINVAL);
    }
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::string& path) {
    const auto file = Open(path);
    if (!file) {
        return std::nullopt;
    }
    RequireRegularFile(file->Get());
    std::string text;
    const support::ReadEnd end = support::ReadAll(file->Get(), kWholeFileLimit, text);
    if (end == support::ReadEnd::kError) {
        throw HostError(errno);
    }
    if (end == support::ReadEnd::kLimit || text.find('\0') != std::string::npos) {
        throw HostError(EINVAL);
    }
    return text;
}

}  // namespace vornplatform
