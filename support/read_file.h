// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_READ_FILE_H
#define VORN_SUPPORT_READ_FILE_H

#include <fcntl.h>

#include <cstddef>
#include <string>

#include "support/descriptor.h"
#include "support/read_all.h"

namespace support {

/** A whole file within a limit; empty where it can't be read or is larger. Never waits for a FIFO.
 */
inline std::string ReadFile(const char* path, std::size_t limit = std::size_t{1} << 20) {
    std::string text;
    const Descriptor file(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file || ReadAll(file.Get(), limit, text) != ReadEnd::kWhole) {
        text.clear();
    }
    return text;
}

}  // namespace support

#endif
