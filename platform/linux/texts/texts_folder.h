// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_TEXTS_TEXTS_FOLDER_H
#define VORN_PLATFORM_LINUX_TEXTS_TEXTS_FOLDER_H

#include <string>

namespace vornplatform {

/** The folder that holds a folder for each language. */
const std::string& TextsFolder();

/** Reads texts from another folder from now on: for the tests, not to be used by two threads. */
void UseTextsFolder(std::string folder);

}  // namespace vornplatform

#endif
