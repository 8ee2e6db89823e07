// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_PIPELINE_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_PIPELINE_TEST_H

#include <string>
#include <vector>

#include "tests/unit/support/library_test.h"

namespace unit {

/**
 * A host on which every stage finds something to do: two processes of two services, one of them
 * with a connection, files in two shares, one of them twice, one hidden, one a folder, and one
 * in no share. A test breaks what it wants broken.
 */
class PipelineTest : public LibraryTest {
protected:
    void SetUp() override;

    /** A process with its service and descriptors (3, 4, ... in the order given). */
    void AddProcess(const std::string& pid, const std::string& unit, const std::string& service,
                    const std::vector<std::string>& targets);
    /** The files of SetUp as the scan finds them. */
    static std::vector<std::string> Scanned();
    /** "pid path" of each record, in order. */
    std::vector<std::string> PidsAndPaths();
    /** What only one stage calls, for telling which ones ran. */
    std::vector<std::string> StagesRun() const;

    Files files;
};

}  // namespace unit

#endif
