// SPDX-License-Identifier: MIT
// The text of /proc/<pid>/cgroup, and what a unit's file may say its name is.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/text_input.h"
#include "platform/linux/texts/texts_folder.h"
#include "src/filehandle_internal.h"

namespace fh = VORN::FileHandle;

namespace {

/** One field more than there are separators, and nothing but separators lost. */
void CheckSplit(const std::string& text, const std::string& separators) {
    std::vector<std::string> fields;
    Must(fh::SplitString(text, fields, separators));
    std::size_t bytes = 0;
    for (const std::string& field : fields) {
        Must(field.find_first_of(separators) == std::string::npos);
        bytes += field.size() + 1;
    }
    Must(bytes <= text.size() + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool kNoFolder = (vornplatform::UseTextsFolder("/nonexistent"), true);
    Must(kNoFolder);
    const std::string_view text = TextOf(data, size);
    std::string unit;
    if (fh::ControlGroupUnitGet(text, unit)) {
        Must(unit.find_first_of("/\n") == std::string::npos);
        const std::string file = fh::UnitFileName(unit);
        Must(file.compare(0, unit.size(), unit) == 0 && file.find('.') != std::string::npos);
    }
    CheckSplit(std::string(text), ":");
    CheckSplit(std::string(text), "/");
    fh::I18nTextGet(std::string(text));
    return 0;
}
