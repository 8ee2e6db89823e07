// SPDX-License-Identifier: MIT
#include "platform/linux/texts/texts_folder.h"

#include <utility>

namespace vornplatform {
namespace {

std::string& Folder() {
    static std::string folder = VORN_TEXTS_FOLDER;
    return folder;
}

}  // namespace

const std::string& TextsFolder() {
    return Folder();
}

void UseTextsFolder(std::string folder) {
    Folder() = std::move(folder);
}

}  // namespace vornplatform
