// SPDX-License-Identifier: MIT
// The administrator's list of hidden directories.

#include "fuzz/text_input.h"
#include "platform/linux/volumes/hidden_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const std::string& name : vornplatform::ParseHiddenList(TextOf(data, size))) {
        // An empty text would hide everything.
        Must(!name.empty() && name.front() != '#' && name.find('\n') == std::string::npos);
    }
    return 0;
}
