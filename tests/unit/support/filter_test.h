// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_FILTER_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_FILTER_TEST_H

#include <string>
#include <vector>

#include "tests/unit/support/library_test.h"

namespace unit {

/** A list to filter, and what became of it. */
class FilterTest : public LibraryTest {
protected:
    int Run(int enumby) {
        journal.Clear();
        return VORN::FileHandle::FilterPath(files, enumby);
    }
    /** "full path -> path, file name" of each record. */
    std::vector<std::string> Kept() {
        std::vector<std::string> kept;
        for (VORN::FileHandle::OpenedFile& file : files) {
            kept.push_back(file.getFullPath() + " -> " + file.getPath() + ", " +
                           file.getFilename());
        }
        return kept;
    }

    Files files;
};

}  // namespace unit

#endif
