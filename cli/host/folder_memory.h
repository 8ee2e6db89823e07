// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FOLDER_MEMORY_H
#define VORN_CLI_HOST_FOLDER_MEMORY_H

#include <string>
#include <string_view>

#include "support/descriptor.h"

namespace cli {

/**
 * Makes it cheap to test many paths in their order for being folders: the command stands before
 * KLIBCFileCheckDir, and while an object of this class lives, its thread tests a path that it has
 * just tested not again, and a neighbour of that by way of their folder, opened once.
 */
class FolderMemory {
public:
    FolderMemory();
    ~FolderMemory();
    FolderMemory(const FolderMemory&) = delete;
    FolderMemory& operator=(const FolderMemory&) = delete;

    /** As KLIBCFileCheckDir, but for the error code. */
    int CheckDir(const char* path);

private:
    int Test(const std::string& path);

    std::string path_;
    int result_ = 0;
    std::string folder_; /**< of the path, with its slash */
    support::Descriptor opened_;
};

}  // namespace cli

#endif
