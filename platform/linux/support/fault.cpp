#include "platform/linux/support/fault.h"

#include <syslog.h>

#include <algorithm>
#include <cerrno>

namespace vornplatform {

int CodeOfErrno(int error) {
    switch (error) {
        case ENOENT:
        case ESRCH:
        case ENXIO:
        case ENODEV:
            return KLIBC_ERR_NOT_FOUND;
        case EINVAL:
        case EFAULT:
        case ENOTDIR:
        case EISDIR:
        case ENAMETOOLONG:
        case ELOOP:
            return KLIBC_ERR_BAD_PARAM;
        case ENOMEM:
        case EMFILE:
        case ENFILE:
        case ENOSPC:
        case EAGAIN:
        case EACCES:
        case EPERM:
            return KLIBC_ERR_RESOURCE;
        default:
            return KLIBC_ERR_INTERNAL;
    }
}

int Fail(int code, const char* source, int line) {
    KLIBCErrSetEx(code, source, line);
    return -1;
}

int FailErrno(int error, const char* source, int line) {
    return Fail(CodeOfErrno(error), source, line);
}

std::string Escape(std::string_view bytes) {
    constexpr size_t kMaxBytes = 256;
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes.substr(0, kMaxBytes)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f && c != '\\') {
            text += c;
            continue;
        }
        text += "\\x";
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xf];
    }
    if (bytes.size() > kMaxBytes) {
        text += "...";
    }
    return text;
}

void Log(int priority, const char* source, int line, const std::string& text) {
    syslog(priority, "%s:%d %s", source, line, text.c_str());
}

}  // namespace vornplatform
