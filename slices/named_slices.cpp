// SPDX-License-Identifier: MIT
#include "slices/named_slices.h"

#include "platform/linux/units/section_value.h"
#include "support/folder.h"
#include "support/read_file.h"
#include "support/text.h"
#include "vorn/platform/file.h"

namespace slices {

bool NamesService(std::string_view unitFile) {
    for (const char* key : {"Name", "NameI18n"}) {
        if (vornplatform::SectionValue(unitFile, VORN_UNIT_SECTION, key)) {
            return true;
        }
    }
    return false;
}

Names FindNamedSlices(const std::vector<std::string>& folders) {
    Names seen;
    Names named;
    for (const std::string& folder : folders) {
        const support::Descriptor opened = support::OpenFolder(folder.c_str());
        if (!opened) {
            continue;
        }
        support::VisitFolder(opened.Get(), [&](const dirent64& entry) {
            const std::string name = entry.d_name;
            if (support::EndsWith(name, ".slice") && seen.insert(name).second &&
                NamesService(support::ReadFile((folder + '/' + name).c_str()))) {
                named.insert(name);
            }
            return true;
        });
    }
    return named;
}

}  // namespace slices
