#include "platform/linux/processes/proc_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/linux/support/fd.h"
#include "platform/linux/support/shortage.h"

namespace vornplatform {
namespace {

Fd Open(const std::string& path) {
    Fd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) {
        ThrowOnShortage(errno);
    }
    return file;
}

ssize_t Read(const Fd& file, char* buffer, std::size_t size) {
    ssize_t count;
    do {
        count = read(file.Get(), buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace

std::string ReadProcHead(const std::string& path) {
    char buffer[4096];
    const Fd file = Open(path);
    const ssize_t count = file ? Read(file, buffer, sizeof(buffer)) : -1;
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
}

bool ReadProcFile(const std::string& path, std::size_t limit, std::string& text) {
    constexpr std::size_t kStep = std::size_t{64} * 1024;
    const Fd file = Open(path);
    if (!file) {
        return false;
    }
    text.clear();
    while (text.size() < limit) {
        const std::size_t used = text.size();
        text.resize(std::min(used + kStep, limit));
        const ssize_t count = Read(file, text.data() + used, text.size() - used);
        text.resize(used + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count <= 0) {
            return count == 0;
        }
    }
    return true;
}

}  // namespace vornplatform
