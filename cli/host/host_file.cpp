#include "cli/host/host_file.h"

#include <fcntl.h>

#include "support/descriptor.h"
#include "support/read_all.h"

namespace cli {

std::string ReadHostFile(const char* path) {
    constexpr size_t kLimit = size_t{1} << 20;
    std::string text;
    const support::Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file || support::ReadAll(file.Get(), kLimit, text) != support::ReadEnd::kWhole) {
        text.clear();
    }
    return text;
}

}  // namespace cli
