// SPDX-License-Identifier: MIT
#include "platform/linux/processes/proc_file.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/linux/support/host_error.h"
#include "support/descriptor.h"
#include "support/read_all.h"

namespace vornplatform {
namespace {

std::optional<std::string> Read(const std::string& path, std::size_t limit, support::EndSign sign) {
    const support::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    if (file && support::ReadAll(file.Get(), limit, text, sign) != support::ReadEnd::kError) {
        return text;
    }
    if (IsNothingThere(errno) || IsWithheld(errno)) {
        return std::nullopt;
    }
    throw HostError(errno);
}

}  // namespace

std::optional<std::string> ReadProcHead(const std::string& path) {
    constexpr std::size_t kHead = 4096;
    return Read(path, kHead, support::EndSign::kShortRead);
}

std::optional<std::string> ReadProcFile(const std::string& path, std::size_t limit) {
    return Read(path, limit, support::EndSign::kEmptyRead);
}

}  // namespace vornplatform
