// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_TEMP_FOLDER_H
#define VORN_TESTS_PLATFORM_SUPPORT_TEMP_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

/** A folder of a test's own, removed with all that is in it. Everybody may enter it. */
class TempFolder {
public:
    TempFolder() {
        std::string name = std::filesystem::temp_directory_path() / "vornplatform.XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = name;
        std::filesystem::permissions(path_, std::filesystem::perms(0755));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string Path(const std::string& name = {}) const { return path_ / name; }

    /** Writes a file, and the folders that it needs; returns its path. */
    std::string Write(const std::string& name, std::string_view text) const {
        const std::filesystem::path path = path_ / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

private:
    std::filesystem::path path_;
};

#endif
