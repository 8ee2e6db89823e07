// SPDX-License-Identifier: MIT
// Unit files and text bundles. The first two lines name section and key, the rest is the file.

#include <algorithm>

#include "fuzz/text_input.h"
#include "platform/linux/units/section_value.h"
#include "support/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text = TextOf(data, size);
    const std::string_view section = support::TakeLine(text);
    const std::string_view key = support::TakeLine(text);
    const auto value = vornplatform::SectionValue(text, section, key);
    if (!value) {
        return 0;
    }
    Must(!value->empty() && value->size() <= text.size());
    Must(value->find('\n') == std::string::npos);
    for (const std::size_t limit : {0, 1, 2, 3, 4, 7, 1023}) {
        const std::string_view part = vornplatform::CutUtf8(*value, limit);
        Must(part.size() <= limit && part.size() + 4 > std::min(limit, value->size()));
        Must(value->compare(0, part.size(), part) == 0);
    }
    return 0;
}
