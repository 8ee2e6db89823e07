// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SUPPORT_FAULT_H
#define VORN_PLATFORM_LINUX_SUPPORT_FAULT_H

#include <exception>
#include <string>
#include <string_view>

#include "vorn/platform/error.h"

namespace vornplatform {

/** The error code that tells callers what an errno value means. */
int CodeOfErrno(int error);

/** Records a code (KLIBC_ERR_*) and returns -1, so that a failing operation is one line. */
int Fail(int code, const char* source, int line);

/** The same for an errno value. */
int FailErrno(int error, const char* source, int line);

/**
 * The same for what ended an operation: the errno value of a HostError, KLIBC_ERR_RESOURCE for
 * std::bad_alloc, KLIBC_ERR_INTERNAL for anything else.
 */
int FailCaught(const std::exception& exception, const char* source, int line);

/** Makes bytes from outside fit for a log line: printable ASCII, at most 256 bytes of them. */
std::string Escape(std::string_view bytes);

/** Writes "source:line text" to the system log. The text must be escaped already. */
void Log(int priority, const char* source, int line, const std::string& text);

}  // namespace vornplatform

#endif
