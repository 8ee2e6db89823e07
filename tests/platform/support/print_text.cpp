// SPDX-License-Identifier: MIT
// Prints the text for the internal service from the texts in the folder given.
#include <cstdio>

#include "platform/linux/texts/texts_folder.h"
#include "vorn/platform/string_bundle.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    vornplatform::UseTextsFolder(argv[1]);
    StringBundle texts("service", nullptr, nullptr, nullptr, nullptr, nullptr);
    std::fputs(texts.Text("internal_service", ""), stdout);
    return 0;
}
