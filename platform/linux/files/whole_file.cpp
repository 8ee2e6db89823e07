#include "platform/linux/files/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/support/fault.h"
#include "platform/linux/support/fd.h"
#include "platform/linux/support/shortage.h"

namespace vornplatform {
namespace {

// Reads on to the end of the file, not to its size: the file may grow or shrink meanwhile.
int ReadToEnd(int fd, std::size_t expected, std::string& text) {
    std::size_t used = 0;
    text.resize(expected + 1);
    while (used <= kTextFileLimit) {
        if (used == text.size()) {
            text.resize(2 * used);
        }
        const ssize_t count = read(fd, text.data() + used, text.size() - used);
        if (count == 0) {
            text.resize(used);
            return 0;
        }
        if (count > 0) {
            used += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return CodeOfErrno(errno);
        }
    }
    return KLIBC_ERR_BAD_PARAM;
}

}  // namespace

int ReadTextFile(const char* path, std::string& text) {
    const Fd file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) {
        return CodeOfErrno(errno);
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (!S_ISREG(status.st_mode) || size > kTextFileLimit) {
        return KLIBC_ERR_BAD_PARAM;
    }
    if (const int error = ReadToEnd(file.Get(), size, text)) {
        return error;
    }
    return text.find('\0') == std::string::npos ? 0 : KLIBC_ERR_BAD_PARAM;
}

int ReadTextFileOrThrow(const char* path, std::string& text) {
    const int error = ReadTextFile(path, text);
    if (error == KLIBC_ERR_RESOURCE) {
        ThrowOnShortage(errno);
    }
    return error;
}

}  // namespace vornplatform
