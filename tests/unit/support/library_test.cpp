// SPDX-License-Identifier: MIT
#include "tests/unit/support/library_test.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

#include "tests/unit/support/failing_calls.h"

namespace unit {

using VORN::FileHandle::OpenedFile;

ScriptedSetters& TheSetters() {
    static ScriptedSetters& setters = *new ScriptedSetters;
    return setters;
}

LibraryTest::LibraryTest()
    : platform(ThePlatform()), libc(TheLibc()), setters(TheSetters()), journal(TheJournal()) {
    ResetPlatform();
    libc = ScriptedLibc();
    setters = ScriptedSetters();
    TheFailingCalls() = FailingCalls();
    journal.Clear();
    journal.onCall = nullptr;
    libc.active = true;
}

LibraryTest::~LibraryTest() {
    libc = ScriptedLibc();
}

void LibraryTest::TearDown() {
    for (size_t i = linesSeen_; i < libc.logLines.size(); ++i) {
        ADD_FAILURE() << "log line that nobody looked at: " << libc.logLines[i].text;
    }
    for (size_t i = errorsSeen_; i < platform.errorSets.size(); ++i) {
        ADD_FAILURE() << "error code that nobody looked at: " << Hex(platform.errorSets[i].code)
                      << " at " << platform.errorSets[i].source << ":"
                      << platform.errorSets[i].line;
    }
    EXPECT_THAT(platform.LiveObjects(), ::testing::IsEmpty()) << "still alive";
}

::testing::AssertionResult LibraryTest::Logged(int priority, const char* format, ...) {
    char text[16384];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    if (linesSeen_ == libc.logLines.size()) {
        return ::testing::AssertionFailure() << "no log line, expected: " << text;
    }
    const LogLine& line = libc.logLines[linesSeen_++];
    if (line.priority == priority && line.format == format && line.text == text) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "log line <" << line.priority << "> " << line.text << " (" << line.format
           << ")\nexpected <" << priority << "> " << text << " (" << format << ")";
}

::testing::AssertionResult LibraryTest::ErrorSet(int code, const std::string& source, int line) {
    if (errorsSeen_ == platform.errorSets.size()) {
        return ::testing::AssertionFailure() << "no error code set";
    }
    const ScriptedPlatform::ErrorSet& set = platform.errorSets[errorsSeen_++];
    if (set.code == code && set.source == source && set.line == line) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "error " << Hex(set.code) << " at " << set.source << ":" << set.line;
}

Files Records(const std::vector<std::pair<std::string, std::string>>& pidsAndPaths) {
    Files files;
    for (const auto& [pid, path] : pidsAndPaths) {
        files.emplace_back();
        files.back().setPid(pid);
        files.back().setFullPath(path);
    }
    return files;
}

std::vector<std::string> Shown(const Files& files) {
    std::vector<std::string> shown;
    for (OpenedFile file : files) {
        shown.push_back(file.getPidStr() + " " + file.getFullPath());
    }
    return shown;
}

std::vector<std::string> Column(const Files& files, std::string (OpenedFile::*getter)()) {
    std::vector<std::string> texts;
    for (OpenedFile file : files) {
        texts.push_back((file.*getter)());
    }
    return texts;
}

void RunInChild(const std::function<void()>& part) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        part();
        std::fflush(nullptr);
        _exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "see the child's failures above";
}

}  // namespace unit
