// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_LIBRARY_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_LIBRARY_TEST_H

/**
 * @file
 * How to write a unit test of the library.
 *
 *     using ShareFilter = unit::LibraryTest;
 *
 *     TEST_F(ShareFilter, ReportsAShareThatCannotBeLookedUp) {
 *         platform.shares = {{"photo", "/volume1/photo"}};           // script
 *         platform.failingShares = {"photo"};
 *         auto list = unit::Records({{"7", "/volume1/photo/a"}});
 *
 *         EXPECT_EQ(FilterPath(list, ENUM_BY_SHARE), -1);             // call
 *
 *         EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share path of share [%s]",
 *                            "filehandle_filter_path", 82, "photo"));  // look, in order
 *         ...
 *     }
 *
 * A test fails at its end on what it has not looked at: a log line not asked for with Logged, an
 * error code set by the library and not asked for with ErrorSet, a platform object that is still
 * alive. The members say what can be scripted: scripted_platform.h, scripted_libc.h,
 * scripted_setters.h. What was called, with which arguments, is in the journal.
 *
 * RunInChild runs a part of a test in a process of its own, for real identities.
 */

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>

#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/support/journal.h"
#include "tests/unit/support/scripted_libc.h"
#include "tests/unit/support/scripted_platform.h"
#include "tests/unit/support/scripted_setters.h"
#include "vorn/filehandle.h"

namespace unit {

class LibraryTest : public ::testing::Test {
protected:
    LibraryTest();
    ~LibraryTest() override;
    void TearDown() override;

    /**
     * Whether the oldest log line not yet looked at has this priority, was written with this very
     * format and reads as it does with these arguments. %m shows errno: set it before.
     */
    ::testing::AssertionResult Logged(int priority, const char* format, ...)
        __attribute__((format(printf, 3, 4)));

    /** Whether the oldest error code set by the library and not yet looked at is this one. */
    ::testing::AssertionResult ErrorSet(int code, const std::string& source, int line);

    ScriptedPlatform& platform;
    ScriptedLibc& libc;
    ScriptedSetters& setters;
    Journal& journal;

private:
    size_t linesSeen_ = 0;
    size_t errorsSeen_ = 0;
};

using Files = std::list<VORN::FileHandle::OpenedFile>;

/** Records with pid and full path, as the scan makes them. */
Files Records(const std::vector<std::pair<std::string, std::string>>& pidsAndPaths);

/** "pid full-path" of each record. */
std::vector<std::string> Shown(const Files& files);

/** One column, or the full path, of each record. */
std::vector<std::string> Column(const Files& files,
                                std::string (VORN::FileHandle::OpenedFile::*getter)());

/** Runs a part of a test in a child process; its failed expectations fail the test. */
void RunInChild(const std::function<void()>& part);

}  // namespace unit

#endif
