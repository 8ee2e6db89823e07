// SPDX-License-Identifier: MIT
#include "platform/linux/support/fault.h"

#include <syslog.h>

#include <cerrno>
#include <new>

#include "platform/linux/support/host_error.h"

namespace vornplatform {

int CodeOfErrno(int error) {
    if (IsNothingThere(error)) {
        return KLIBC_ERR_NOT_FOUND;
    }
    switch (error) {
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

int FailCaught(const std::exception& exception, const char* source, int line) {
    if (const auto* host = dynamic_cast<const HostError*>(&exception)) {
        return FailErrno(host->Error(), source, line);
    }
    const bool isMemory = dynamic_cast<const std::bad_alloc*>(&exception) != nullptr;
    return Fail(isMemory ? KLIBC_ERR_RESOURCE : KLIBC_ERR_INTERNAL, source, line);
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
